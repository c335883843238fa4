#include "workbench/views/objects/MorphoPropertyPageController.h"

#include "foundation/Status.h"
#include "image/Morpho.h"
#include "workbench/views/picture/GraphSurface.h"
#include "workbench/views/picture/Overlay.h"

#include <cwchar>

namespace TeskPlus {

namespace {

/// The side of the picture of the element, with a pixel to each of the screen.
constexpr int pictureSide = 101;

/// What a page makes of its rows.
struct Sizes
{
    int Width, Height, Diagonal, Size;
};
struct Family
{
    const wchar_t* Page;
    void (*Make)(Morpho& Element, const Sizes& Rows);
};

constexpr Family families[] = {
    {L"General", [](Morpho& m, const Sizes& s) { m.Set(s.Width, s.Height, s.Diagonal); }},
    {L"Box", [](Morpho& m, const Sizes& s) { m.Box(s.Width, s.Height); }},
    {L"Square", [](Morpho& m, const Sizes& s) { m.Square(s.Size); }},
    {L"Octagon", [](Morpho& m, const Sizes& s) { m.Octagon(s.Size); }},
    {L"Diamond", [](Morpho& m, const Sizes& s) { m.Diamond(s.Size); }},
    {L"Horizontal", [](Morpho& m, const Sizes& s) { m.Horizontal(s.Width); }},
    {L"Vertical", [](Morpho& m, const Sizes& s) { m.Vertical(s.Height); }},
};

struct Field
{
    const wchar_t* Label;
    int Sizes::*Value;
};
constexpr Field fields[] = {
    {L"Width", &Sizes::Width}, {L"Height", &Sizes::Height}, {L"Diagonal", &Sizes::Diagonal}, {L"Size", &Sizes::Size}};

void DrawElement(const Morpho& element)
{
    Image image;
    image.Set(pictureSide, pictureSide, Gray);
    RenderMorpho(element, image);
    image.Draw(false);
}

} // namespace

const wchar_t* MorphoPropertyPageController::PageOf(int Width, int Height, int Diagonal)
{
    if (Diagonal == 1)
        return Width == Height ? L"Square" : Width == 1 ? L"Vertical" : Height == 1 ? L"Horizontal" : L"Box";
    if (Width != Height) return nullptr;
    return Diagonal == Width ? L"Diamond" : Diagonal == Width - Width / 4 * 2 ? L"Octagon" : L"General";
}

MorphoPropertyPageController::MorphoPropertyPageController(const ControllerRequest& Request, ViewContext& Context)
    : PropertySheetController(Request, Context, sheetMenu::RadioGroup, L"Shape")
{
    rowsFromDefault_ = false;
    picture_ = new GraphWidget;
    picture_->setObjectName("MorphoPicture");
    picture_->setFixedSize(pictureSide, pictureSide);
    picture_->Draw = [this](int width, int) {
        Graph::Zoom = static_cast<double>(width) / pictureSide;
        if (const Morpho* element = ObjectOf<Morpho>(this)) DrawElement(*element);
    };
    int first = -1;
    if (const Morpho* element = ObjectOf<Morpho>(this))
        if (const wchar_t* name = PageOf(element->Width, element->Height, element->Diagonal))
            for (int i = 0; i < NumPages(); i++)
                if (Pages()[static_cast<std::size_t>(i)].Title == name) first = i;
    BuildPropertySheet(first);
}

MorphoPropertyPageController::~MorphoPropertyPageController()
{
    delete picture_;
}

void MorphoPropertyPageController::AddExtras(int)
{
    AddControlFromExternalController(picture_);
    picture_->Redraw();
}

/// What a row holds, which it gives away by the property that it sets; the element stays as it was.
int MorphoPropertyPageController::ReadRow(IController& row, Morpho& element)
{
    const int width = element.Width, height = element.Height, diagonal = element.Diagonal;
    Status::Error().Code = NoError;
    row.UpdateProperty();
    if (Status::Error().Code != NoError) refused_ = &row;
    Var<int> value;
    engine_.GetProperty(&value, row.ControllerNode(), currentVariable_);
    element.Set(width, height, diagonal);
    return value.Value;
}

void MorphoPropertyPageController::UpdateProperty()
{
    Morpho* element = ObjectOf<Morpho>(this);
    if (!element || SelectedPage() < 0) return;
    const int width = element->Width, height = element->Height;
    Sizes sizes{width, height, element->Diagonal, width};
    refused_ = nullptr;
    for (IController* row : Rows())
        for (const Field& field : fields)
            if (!std::wcscmp(Engine::Tree[row->ControllerNode()]->Label, field.Label))
                sizes.*field.Value = ReadRow(*row, *element);
    // A line hands its length on to the shape that follows it.
    if (width == 1 && height > 1) sizes.Width = sizes.Size = height;
    if (height == 1 && width > 1) sizes.Height = sizes.Size = width;
    const std::wstring page = GetSelectedPageName();
    for (const Family& family : families)
        if (page == family.Page) family.Make(*element, sizes);
    // The refusal is what the user is told; the element keeps the former value.
    if (refused_) refused_->UpdateProperty();
}

void MorphoPropertyPageController::UpdateControl(bool Mode, bool Dragging)
{
    PropertySheetController::UpdateControl(Mode, Dragging);
    picture_->Redraw();
}

} // namespace TeskPlus
