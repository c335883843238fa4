#include "workbench/views/objects/KernelController.h"

#include "image/Kernel.h"
#include "workbench/logic/Refusal.h"
#include "workbench/views/picture/Overlay.h"

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>

#include <algorithm>
#include <cmath>

namespace TeskPlus {

namespace {

constexpr int decimals = 3;
/// A cell holds "-999.999" at the least.
constexpr int cellWidth = 64;

} // namespace

bool KernelModel::Fill(int width, int height, const std::vector<double>& values)
{
    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    if (width == width_ && height == height_) {
        if (values == values_ || count == 0) return false;
        values_ = values;
        values_.resize(count);
        emit dataChanged(index(0, 0), index(height - 1, width - 1));
        return false;
    }
    beginResetModel();
    width_ = width;
    height_ = height;
    values_ = values;
    values_.resize(count);
    endResetModel();
    return true;
}

QVariant KernelModel::data(const QModelIndex& index, int role) const
{
    const double value = At(index.column(), index.row());
    if (role == Qt::TextAlignmentRole) return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::DisplayRole) return QLocale::c().toString(value, 'f', decimals);
    if (role == Qt::EditRole) return QLocale::c().toString(value, 'g', QLocale::FloatingPointShortest);
    return {};
}

bool KernelModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole) return false;
    bool isNumber = false;
    const double number = QLocale::c().toDouble(value.toString().trimmed().replace(',', '.'), &isNumber);
    if (!isNumber || !std::isfinite(number)) return false;
    values_[Index(index.column(), index.row())] = number;
    emit dataChanged(index, index);
    if (Edited) Edited();
    return true;
}

QVariant KernelModel::headerData(int section, Qt::Orientation, int role) const
{
    return role == Qt::DisplayRole ? QVariant(section) : QVariant();
}

Qt::ItemFlags KernelModel::flags(const QModelIndex&) const
{
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
}

KernelWidget::KernelWidget(KernelModel& model)
{
    setObjectName("KernelWidget");
    gain_ = new QDoubleSpinBox;
    gain_->setObjectName("Gain");
    gain_->setRange(0, 10);
    gain_->setSingleStep(0.01);
    gain_->setDecimals(2);
    gain_->setValue(1);
    auto* label = new QLabel(tr("&Gain"));
    label->setBuddy(gain_);
    auto* normalize = new QPushButton(tr("&Normalize Coefficients"));
    normalize->setObjectName("Normalize");
    connect(normalize, &QPushButton::clicked, this, [this] { NormalizeAsked(); });
    grid_ = new QTableView;
    grid_->setObjectName("Coefficients");
    grid_->setModel(&model);
    grid_->setSortingEnabled(false);
    grid_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    grid_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    grid_->horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    grid_->horizontalHeader()->setDefaultSectionSize(cellWidth);
    grid_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);

    auto* rows = new QGridLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setColumnStretch(2, 1);
    rows->addWidget(new HelpWidget(tr("Kernel object"), helpStyle::Title), 0, 0, 1, 3);
    rows->addWidget(label, 1, 0);
    rows->addWidget(gain_, 1, 1);
    rows->addWidget(
        new HelpWidget(tr("A global gain value to be applied after normalization of the coefficients"), helpStyle::Row),
        1, 2);
    rows->addWidget(normalize, 2, 0, 1, 2);
    rows->addWidget(
        new HelpWidget(
            tr("Automatic rescaling of the kernel coefficients so that their sum equals the given gain constant"),
            helpStyle::Row),
        2, 2);
    rows->addWidget(new QLabel(tr("Coeffients")), 3, 0, 1, 2);
    rows->addWidget(new HelpWidget(tr("Accesses the value of a given convolution coefficient"), helpStyle::Row), 3, 2);
    rows->addWidget(grid_, 4, 0, 1, 3, Qt::AlignLeft | Qt::AlignTop);
    FitCells();
}

double KernelWidget::Gain() const
{
    return gain_->value();
}

void KernelWidget::FitCells()
{
    const int frame = 2 * grid_->frameWidth();
    grid_->setFixedSize(grid_->verticalHeader()->sizeHint().width() + grid_->horizontalHeader()->length() + frame,
                        grid_->horizontalHeader()->sizeHint().height() + grid_->verticalHeader()->length() + frame);
}

namespace {

void MakeMean(Kernel& kernel)
{
    std::fill(kernel.Coefficients.begin(), kernel.Coefficients.end(),
              1.0 / static_cast<double>(kernel.Coefficients.size()));
}

} // namespace

KernelController::KernelController(const ControllerRequest& Request) : ControllerBase(Request, true)
{
    widget_ = new KernelWidget(model_);
    model_.Edited = [this] { Notify(false, false, false); };
    widget_->NormalizeAsked = [this] {
        Kernel* kernel = ObjectOf<Kernel>(this);
        if (!kernel) return;
        kernel->Normalize(widget_->Gain());
        Refusal::Note();
        // The cells are those of the mask now, so that the pull takes nothing back.
        UpdateControl(false, false);
        Notify(false, false, false);
    };
    // A new mask begins as a mean, too: one of zeros would show a black picture.
    if (Kernel* kernel = Request.FromDefault ? ObjectOf<Kernel>(this) : nullptr)
        if (std::all_of(kernel->Coefficients.begin(), kernel->Coefficients.end(), [](double c) { return c == 0; }))
            MakeMean(*kernel);
    UpdateControl(false, false);
}

KernelController::~KernelController()
{
    delete widget_;
}

void KernelController::UpdateProperty()
{
    Kernel* kernel = ObjectOf<Kernel>(this);
    if (!kernel) return;
    if (kernel->Width != model_.Width() || kernel->Height != model_.Height()) {
        MakeMean(*kernel);
        return;
    }
    for (int y = 0; y < kernel->Height; y++)
        for (int x = 0; x < kernel->Width; x++)
            kernel->Coefficient(x, y) = model_.At(x, y);
}

void KernelController::UpdateControl(bool, bool)
{
    Kernel* kernel = ObjectOf<Kernel>(this);
    if (!kernel) return;
    const int width = Max(kernel->Width, 0), height = Max(kernel->Height, 0);
    std::vector<double> values;
    values.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            values.push_back(kernel->Coefficient(x, y));
    if (!model_.Fill(width, height, values)) return;
    widget_->FitCells();
    if (Resized) Resized();
}

KernelPropertyPageController::KernelPropertyPageController(const ControllerRequest& Request, ViewContext& Context)
    : PropertySheetController(Request, Context, sheetMenu::RadioGroup)
{
    auto grid = std::make_unique<KernelController>(Request);
    grid->Resized = [this] { Fit(); };
    InsertExternalController(std::move(grid));
    BuildPropertySheet();
}

void KernelPropertyPageController::AddExtras(int)
{
    AddControlFromExternalController(static_cast<QWidget*>(Externals().front()->Control()));
}

void KernelPropertyPageController::PullRow(IController& row)
{
    Kernel* kernel = ObjectOf<Kernel>(this);
    if (!kernel) return;
    const int width = kernel->Width, height = kernel->Height;
    const std::vector<double> coefficients = kernel->Coefficients;
    PropertySheetController::PullRow(row);
    if (kernel->Width == width && kernel->Height == height) kernel->Coefficients = coefficients;
}

} // namespace TeskPlus
