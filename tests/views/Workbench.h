// The whole program on the offscreen platform, driven as a user drives it: by menus, mouse and keys.
#pragma once

#include "foundation/Status.h"
#include "image/Image.h"
#include "workbench/logic/OperationHandler.h"
#include "workbench/views/FileDialogs.h"
#include "workbench/views/MainForm.h"
#include "workbench/views/OperationForm.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMdiArea>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <cwchar>
#include <memory>
#include <stdexcept>

namespace TeskPlus {

class Workbench
{
public:
    Workbench() { Start(); }

    /// Ends the program and starts it again: the settings stay.
    void Restart()
    {
        form_.reset();
        Start();
    }

    MainForm& Form() { return *form_; }
    Tesk::Engine& Engine() { return form_->GetEngine(); }
    Operation& At(int id) { return *Engine().Operations[static_cast<std::size_t>(id)]; }
    int Count() { return Engine().NumOperations(); }

    /// The entry that the texts lead to, from the menu bar on; null if one is not there.
    QAction* Entry(const QStringList& path)
    {
        QList<QAction*> actions = form_->menuBar()->actions();
        QAction* found = nullptr;
        for (const QString& text : path) {
            found = nullptr;
            for (QAction* action : actions)
                if (action->text() == text) found = action;
            if (!found) return nullptr;
            if (found->menu()) actions = found->menu()->actions();
        }
        return found;
    }
    void Menu(const QStringList& path)
    {
        QAction* entry = Entry(path);
        ASSERT_TRUE(entry) << path.join(" > ").toStdString();
        entry->trigger();
        Settle();
    }
    void ReadImage(const QString& path = {})
    {
        FileDialogs::Pending() = QStringList{path.isEmpty() ? Picture() : path};
        Menu({"File", "Image", "Image File...", "Read  from File"});
    }
    void Invert() { Menu({"Process", "Point to point", "Pixel Conversion...", "Invert"}); }

    /// The window of the selected operation; null for none.
    OperationForm* OperationWindow()
    {
        for (auto* window : form_->findChildren<OperationForm*>("OperationForm"))
            if (window->isVisible()) return window;
        return nullptr;
    }
    /// A widget of the selected operation's row of an argument: "Threshold", "Slider".
    template <typename T>
    T* Row(const QString& argument, const QString& part = {})
    {
        OperationForm* window = OperationWindow();
        auto* row = window ? window->findChild<QWidget*>(argument) : nullptr;
        if (!row) return nullptr;
        if (part.isEmpty()) {
            if (auto* self = qobject_cast<T*>(row)) return self;
            return row->findChild<T*>();
        }
        return row->findChild<T*>(part);
    }

    QTreeWidget& List() { return *form_->findChild<QTreeWidget*>("Operations"); }
    /// A left click on a line of the list, found by the start of its text below an operation; the operation itself with
    /// an empty text.
    void ClickLine(int operation, const QString& text = {})
    {
        QTreeWidgetItem* item = Line(operation, text);
        ASSERT_TRUE(item) << text.toStdString();
        List().scrollToItem(item);
        QTest::mouseClick(List().viewport(), Qt::LeftButton, {}, List().visualItemRect(item).center());
        Settle();
    }
    QTreeWidgetItem* Line(int operation, const QString& text)
    {
        QTreeWidgetItem* item = List().topLevelItem(operation);
        if (text.isEmpty() || !item) return item;
        for (int i = 0; i < item->childCount(); i++)
            if (item->child(i)->text(0).startsWith(text)) return item->child(i);
        return nullptr;
    }

    /// Presses a button of the next message box, in which the text must stand.
    void Answer(const QString& button, const QString& text)
    {
        WhenModal([=](QWidget* box) {
            bool said = false;
            for (auto* label : box->findChildren<QLabel*>())
                said = said || label->text().contains(text);
            EXPECT_TRUE(said) << text.toStdString();
            for (auto* candidate : box->findChildren<QAbstractButton*>())
                if (candidate->text() == button) {
                    QTest::mouseClick(candidate, Qt::LeftButton);
                    return;
                }
            ADD_FAILURE() << "no button " << button.toStdString();
            box->close();
        });
    }
    /// Does something as soon as a dialog waits for an answer.
    void WhenModal(std::function<void(QWidget*)> then)
    {
        auto* timer = new QTimer(form_.get());
        QObject::connect(timer, &QTimer::timeout, timer, [timer, then] {
            if (QWidget* modal = QApplication::activeModalWidget()) {
                timer->deleteLater();
                then(modal);
            }
        });
        timer->start(5);
    }

    QString StatusText() { return form_->findChild<QLabel*>("toolStripStatusLabel1")->text(); }
    template <typename T>
    T& Value(int operation, const wchar_t* identifier)
    {
        for (const Arg& argument : At(operation).Args)
            if (!std::wcscmp(Tesk::Engine::Tree[argument.Node]->Identifier, identifier))
                return static_cast<Var<T>*>(argument.Variable)->Value;
        throw std::runtime_error("no such argument");
    }

    static void Settle()
    {
        for (int i = 0; i < 4; i++)
            QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// A gray picture of 200 x 120 with a ramp, made once.
    static QString Picture();

private:
    void Start()
    {
        form_ = std::make_unique<MainForm>(false);
        form_->resize(1400, 900);
        form_->show();
        Settle();
    }

    std::unique_ptr<MainForm> form_;
};

} // namespace TeskPlus
