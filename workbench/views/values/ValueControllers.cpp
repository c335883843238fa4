// The controllers of values in rows, and the table that makes them known to the factory.
#include "measure/Blobs.h"
#include "workbench/views/FileDialogs.h"
#include "workbench/views/Text.h"
#include "workbench/views/ViewContext.h"
#include "workbench/views/values/ChoiceWidgets.h"
#include "workbench/views/values/PointControllers.h"
#include "workbench/views/values/ProfileControllers.h"

#include <QMdiArea>

namespace TeskPlus {

namespace {

class IntController final : public ValueController
{
public:
    explicit IntController(const ControllerRequest& request) : ValueController(request)
    {
        auto* widget = new IntWidget(Qt16(argumentName_));
        SetWidget(widget);
        const auto& node = NodeAs<IntArgumentNode>();
        if (IsIn()) widget->SetRange(node.Minimum, Maximum(), node.Step);
        widget->SetState(IsIn(), argumentAttr_);
        widget->SetValue(!isProperty_ && request.FromDefault && IsIn() ? node.Default : ReadInteger());
    }

    void UpdateProperty() override
    {
        if (!IsIn()) return;
        auto& widget = Widget();
        if (argumentAttr_ & attributeValue::LinkedMaximum) {
            const int maximum = Maximum();
            if (widget.Value() > maximum && widget.Value() != MaxInt) widget.SetValue(maximum);
            if (maximum != widget.Maximum()) widget.SetMaximum(maximum);
        }
        WriteInteger(widget.Value());
    }

    void UpdateControl(bool, bool) override { Widget().SetValue(ReadInteger()); }

private:
    IntWidget& Widget() const { return *static_cast<IntWidget*>(widget_.data()); }

    int Maximum() const
    {
        const auto& node = NodeAs<IntArgumentNode>();
        if (!(argumentAttr_ & attributeValue::LinkedMaximum)) return node.Maximum;
        const int linked = RetrievePropertyValueFromNode(node.Maximum) - 1;
        return linked < node.Minimum ? node.Minimum + 1 : linked;
    }
};

/// `double` and `float`.
template <typename T, typename Node>
class FloatController final : public ValueController
{
public:
    explicit FloatController(const ControllerRequest& request) : ValueController(request)
    {
        auto* widget = new FloatWidget(Qt16(argumentName_));
        SetWidget(widget);
        const auto& node = NodeAs<Node>();
        if (IsIn()) widget->SetRange(node.Minimum, node.Maximum, node.Step);
        widget->SetState(IsIn(), argumentAttr_);
        widget->SetValue(!isProperty_ && request.FromDefault && IsIn() ? node.Default : Read<T>(0));
    }

    void UpdateProperty() override
    {
        if (IsIn()) Write<T>(static_cast<T>(Widget().Value()));
    }
    void UpdateControl(bool, bool) override { Widget().SetValue(Read<T>(0)); }

private:
    FloatWidget& Widget() const { return *static_cast<FloatWidget*>(widget_.data()); }
};

class BoolController final : public ValueController
{
public:
    explicit BoolController(const ControllerRequest& request) : ValueController(request)
    {
        auto* widget = new BoolWidget(Qt16(argumentName_), IsIn());
        SetWidget(widget);
        widget->SetValue(!isProperty_ && request.FromDefault && IsIn() ? NodeAs<BoolArgumentNode>().Default
                                                                       : Read<bool>(false));
    }

    void UpdateProperty() override
    {
        if (IsIn()) Write<bool>(Widget().Value());
    }
    void UpdateControl(bool, bool) override { Widget().SetValue(Read<bool>(false)); }

private:
    BoolWidget& Widget() const { return *static_cast<BoolWidget*>(widget_.data()); }
};

class EnumController final : public ValueController
{
public:
    explicit EnumController(const ControllerRequest& request) : ValueController(request)
    {
        const bool isNumber = NodeAs<ArgumentNode>().NamesNode >= 0;
        const int byDefault = isNumber ? NodeAs<IntArgumentNode>().Default : NodeAs<EnumArgumentNode>().Default;
        auto* widget =
            new RadioButtonGroupWidget(Qt16(argumentName_), IsIn(), argumentAttr_,
                                       isNumber ? Names(NodeAs<IntArgumentNode>()) : Cases(NodeAs<EnumArgumentNode>()));
        SetWidget(widget);
        if (isMixed_())
            widget->SetCustomRange(isEdgeIndex_() ? -edgeIndexes : 0, isEdgeIndex_() ? edgeIndexes : LastIndex());
        widget->SetValue(!isProperty_ && request.FromDefault && IsIn() ? byDefault : ReadInteger());
    }

    void UpdateProperty() override
    {
        if (!IsIn()) return;
        if (isMixed_() && !isEdgeIndex_()) Widget().SetCustomRange(0, LastIndex());
        WriteInteger(Widget().Value());
    }

    void UpdateControl(bool, bool) override
    {
        // The custom item stays chosen, whatever case has its number.
        if (!Widget().IsCustom()) Widget().SetValue(ReadInteger());
    }

private:
    static constexpr int edgeIndexes = 10;
    static constexpr int mostCases = 128;

    RadioButtonGroupWidget& Widget() const { return *static_cast<RadioButtonGroupWidget*>(widget_.data()); }
    bool isMixed_() const { return IsIn() && argumentAttr_ & attributeValue::Mixed; }
    bool isEdgeIndex_() const { return NodeAs<ArgumentNode>().Role == argumentRole::EdgeIndex; }

    /// The last that a custom number may name: of what a property counts, or else of the blobs that the operation
    /// takes.
    int LastIndex() const
    {
        if (NodeAs<ArgumentNode>().NamesNode >= 0) return 0;
        if (const int count = NodeAs<EnumArgumentNode>().CountNode; count >= 0)
            return RetrievePropertyValueFromNode(count) - 1;
        if (const Operation* operation = RetrieveOperation())
            for (const Arg& argument : operation->Args)
                if (const auto* blobs = dynamic_cast<const Var<Blobs>*>(argument.Variable))
                    return blobs->Value.NumBlobs - 1;
        return 0;
    }

    /// The names of a whole number's values, within its range.
    static std::vector<ChoiceItem> Names(const IntArgumentNode& node)
    {
        std::vector<ChoiceItem> items;
        for (int at = Engine::Tree[node.NamesNode]->FirstChild; at != -1; at = Engine::Tree[at]->NextSibling) {
            const auto* name = static_cast<const EnumCaseNode*>(Engine::Tree[at]);
            if (name->Value >= node.Minimum && name->Value <= node.Maximum)
                items.push_back({Qt16(name->Label), name->Value});
        }
        return items;
    }

    static std::vector<ChoiceItem> Cases(const EnumArgumentNode& node)
    {
        std::vector<ChoiceItem> items;
        int position = 0;
        for (int at = Engine::Tree[node.EnumIndex]->FirstChild; at != -1 && position < mostCases;
             at = Engine::Tree[at]->NextSibling, position++)
            if (node.Cases.Bit(position)) {
                const auto* enumerator = static_cast<const EnumCaseNode*>(Engine::Tree[at]);
                items.push_back({Qt16(enumerator->Label), enumerator->Value});
            }
        return items;
    }
};

/// A text, a character, or a file name.
class StringController final : public ValueController
{
public:
    StringController(const ControllerRequest& request, ViewContext& context)
        : ValueController(request), context_(context)
    {
        const methodRole role = RoleOfMethod(request.Method);
        isRead_ = !isProperty_ && IsIn() && role == methodRole::Read;
        isWrite_ = !isProperty_ && IsIn() && role == methodRole::Write;
        // Other texts are typed, whatever list of files their flags would give.
        const std::uint32_t flags = isRead_ ? argumentAttr_ : argumentAttr_ & ~attributeValue::Slider;
        auto* widget = new StringInputWidget(Qt16(argumentName_), IsIn(), flags);
        SetWidget(widget);
        if (IsCharacter()) widget->SetMaximumLength(1);
        if (isRead_ || isWrite_) {
            widget->ShowFileButton(isRead_ ? "open" : "save");
            widget->FileButtonPressed = [this] { AskFile(); };
        }
        // A new file argument holds the filter of its dialog, which is no file.
        if (!request.FromDefault || !(isRead_ || isWrite_)) widget->SetValue(ReadText());
        if ((isRead_ || isWrite_) && request.FromDefault) isCancelled_ = !AskFile();
    }

    /// The user cancelled the dialog of a new operation: its status is "KO".
    bool IsCancelled() const { return isCancelled_; }

    void UpdateProperty() override
    {
        if (!IsIn()) return;
        const QString text = Widget().Value();
        if (argumentType_ == CodeOf(L"char"))
            Write<char>(text.isEmpty() ? '\0' : text.toLocal8Bit().front());
        else if (argumentType_ == CodeOf(L"wchar_t"))
            Write<wchar_t>(text.isEmpty() ? L'\0' : text.toStdWString().front());
        else if (auto* variable = dynamic_cast<Var<const char*>*>(Target())) {
            SetText(*variable, text.toStdString());
            Store();
        }
    }

    void UpdateControl(bool, bool) override { Widget().SetValue(ReadText()); }

private:
    StringInputWidget& Widget() const { return *static_cast<StringInputWidget*>(widget_.data()); }
    bool IsCharacter() const { return argumentType_ == CodeOf(L"char") || argumentType_ == CodeOf(L"wchar_t"); }

    QString ReadText()
    {
        const AnyVariable* variable = Fetch();
        if (const auto* narrow = dynamic_cast<const Var<const char*>*>(variable))
            return QString::fromUtf8(narrow->Value ? narrow->Value : "");
        if (const auto* wide = dynamic_cast<const Var<const wchar_t*>*>(variable)) return Qt16(wide->Value);
        if (const auto* letter = dynamic_cast<const Var<char>*>(variable))
            return letter->Value ? QString(QChar::fromLatin1(letter->Value)) : QString();
        if (const auto* letter = dynamic_cast<const Var<wchar_t>*>(variable))
            return letter->Value ? QString(QChar(static_cast<ushort>(letter->Value))) : QString();
        return {};
    }

    /// False if the user cancelled.
    bool AskFile()
    {
        const QString filter = QString::fromUtf8(NodeAs<StringArgumentNode>().Default);
        const QStringList paths =
            FileDialogs::Ask(context_.workArea->window(), {filter.toStdWString(), isWrite_}, isRead_);
        if (paths.isEmpty()) return false;
        if (isRead_ && argumentAttr_ & attributeValue::Slider)
            Widget().AppendFiles(paths);
        else
            Widget().SetValue(paths.front());
        Notify(false, false, false);
        return true;
    }

    ViewContext& context_;
    bool isRead_ = false, isWrite_ = false, isCancelled_ = false;
};

class RgbController final : public ValueController
{
public:
    explicit RgbController(const ControllerRequest& request) : ValueController(request)
    {
        auto* widget = new RgbWidget(Qt16(argumentName_), IsIn(), argumentAttr_);
        SetWidget(widget);
        widget->SetValue(!isProperty_ && request.FromDefault && IsIn() ? NodeAs<RgbPixelArgumentNode>().Default
                                                                       : Read<RgbPixel>({0, 0, 0}));
    }

    void UpdateProperty() override
    {
        if (IsIn()) Write<RgbPixel>(Widget().Value());
    }
    void UpdateControl(bool, bool) override { Widget().SetValue(Read<RgbPixel>({0, 0, 0})); }

private:
    RgbWidget& Widget() const { return *static_cast<RgbWidget*>(widget_.data()); }
};

template <typename Controller>
ControllerMaker Maker()
{
    return [](const ControllerRequest& request) { return std::make_unique<Controller>(request); };
}

std::unique_ptr<IController> MakeInteger(const ControllerRequest& request)
{
    if (Engine::VarNode(request.Node)->NamesNode >= 0) return std::make_unique<EnumController>(request);
    switch (request.IsProperty ? integerKind::Plain : IntegerKind(request.Method, request.Node)) {
    case integerKind::Profile:
        return MakeProfilePosition(request);
    case integerKind::ProfileThickness:
        return MakeProfileBreadth(request);
    case integerKind::PathThreshold:
        return MakePathThreshold(request);
    default:
        return std::make_unique<IntController>(request);
    }
}

} // namespace

void RegisterValueControllers(ControllerFactory& factory, ViewContext& context)
{
    factory.Register(TypesOfKind(typeKind::Enumeration), Maker<EnumController>());
    factory.Register(TypesOfKind(typeKind::Integer), MakeInteger);
    factory.Register(CodeOf(L"double"), Maker<FloatController<double, DbleArgumentNode>>());
    factory.Register(CodeOf(L"float"), Maker<FloatController<float, FloatArgumentNode>>());
    factory.Register(CodeOf(L"bool"), Maker<BoolController>());
    factory.Register({CodeOf(L"char"), CodeOf(L"char*"), CodeOf(L"wchar_t"), CodeOf(L"wchar_t*")},
                     [&context](const ControllerRequest& request) -> std::unique_ptr<IController> {
                         auto made = std::make_unique<StringController>(request, context);
                         if (made->IsCancelled()) return nullptr;
                         return made;
                     });
    factory.Register(CodeOf(L"RgbPixel"), Maker<RgbController>());
    factory.Register(CodeOf(L"Site"), Maker<SiteController>());
    factory.Register(CodeOf(L"XY"), [](const ControllerRequest& request) -> std::unique_ptr<IController> {
        if (RoleOfMethod(request.Method) == methodRole::Line) return MakeProfileEnd(request);
        return std::make_unique<XYController>(request);
    });
}

} // namespace TeskPlus
