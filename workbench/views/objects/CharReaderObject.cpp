// A reader of characters is drawn on its picture with what it has read, and has a sheet with a table of its characters
// and a view of its font. A press on a character selects its row in the table, and the other way round.
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"
#include "read/CharReader.h"

#include <iterator>
#include <string>
#include <vector>

namespace TeskPlus {

namespace {

enum optionPlace : std::size_t
{
    ViewCharacters,
    ViewLayout,
    ViewText
};
constexpr SheetOption options[] = {{L"View characters", true}, {L"View layout", true}, {L"View text", true}};
CharReader& ReaderOf(AnyVariable& object)
{
    return static_cast<Var<CharReader>&>(object).Value;
}

/// Changes a reader and those that it goes on from.
template <typename Change>
void ChangeAll(AnyVariable& object, Change change)
{
    change(ReaderOf(object));
    EachSource<CharReader>(object, change);
}

void TakeLayout(AnyVariable& Object, int)
{
    // Only the one that is shown says that it has no characters.
    ChangeAll(Object, [&](CharReader& reader) {
        if (&reader == &ReaderOf(Object) || reader.NumChars > 0) reader.TakeLayout();
    });
}

void DropLayout(AnyVariable& Object, int)
{
    ChangeAll(Object, [](CharReader& reader) { reader.DropLayout(); });
}

void DeleteFontChar(AnyVariable& object, int index)
{
    const int count = ReaderOf(object).NumFontChars, code = ReaderOf(object).FontCharAt(index).Code;
    ChangeAll(object, [&](CharReader& reader) {
        if (reader.NumFontChars == count && reader.FontCharAt(index).Code == code) reader.FontCharDelete(index);
    });
}

constexpr SheetButton buttons[] = {{L"Take Layout", TakeLayout}, {L"Drop Layout", DropLayout}};

/// The character that is selected, of all readers: a run makes the characters of a reader anew, and leaves it alone.
struct
{
    const CharReader* reader = nullptr;
    int index = -1;
} selection;

int Selected(AnyVariable& Object)
{
    const CharReader& reader = ReaderOf(Object);
    return selection.reader == &reader && selection.index < reader.NumChars ? selection.index : -1;
}

void Select(AnyVariable& Object, int Line)
{
    selection = {&ReaderOf(Object), Line};
}

/// The lines of what was read, the last one at the bottom of the picture's window.
void DrawResult(const CharReader& reader, const Image& picture)
{
    constexpr double lineHeight = 16, margin = 2;
    std::vector<std::wstring> lines(1);
    for (const wchar_t* c = reader.UnicodeString; *c; c++)
        if (*c == L'\n')
            lines.emplace_back();
        else
            lines.back() += *c;
    const GraphSettings settings;
    Graph::TextAlignX = -1;
    Graph::TextAlignY = 1;
    Graph::TextColor = Green;
    double y = picture.Y + picture.Height - margin / Graph::Zoom;
    for (auto line = lines.rbegin(); line != lines.rend(); ++line, y -= lineHeight / Graph::Zoom)
        Graph::Text(picture.X + margin / Graph::Zoom, y, line->c_str());
}

void Draw(AnyVariable& Object, const IController& Child)
{
    const CharReader& reader = ReaderOf(Object);
    if (OptionOf(Child, ViewLayout, true)) reader.DrawLayout();
    reader.Draw(OptionOf(Child, ViewCharacters, true));
    if (const int selected = Selected(Object); selected >= 0) DrawIn(Blue, [&] { reader.DrawChar(selected); });
    const Image* picture = PictureOf(Child.MotherController());
    if (picture && OptionOf(Child, ViewText, true)) DrawResult(reader, *picture);
}

OverlayHit Hit(IController& Child, int X, int Y)
{
    CharReader* reader = ObjectOf<CharReader>(&Child);
    if (reader) reader->HitChar(X, Y);
    const bool isHit = reader && reader->Handle != NoHandle;
    return {isHit, isHit ? Qt::CrossCursor : Qt::ArrowCursor};
}

bool Press(IController& Child, int X, int Y)
{
    if (!Hit(Child, X, Y).IsHit) return false;
    const CharReader* reader = ObjectOf<CharReader>(&Child);
    selection = {reader, reader->HitIndex};
    return true;
}

constexpr const char* columns[] = {"Index", "Character", "Score", "Contrast", "Font Character"};
constexpr int characterColumn = 1;

std::vector<QString> Columns(AnyVariable&)
{
    return {std::begin(columns), std::end(columns)};
}

int Count(AnyVariable& Object)
{
    return ReaderOf(Object).NumChars;
}

/// Before a reading there is nothing but the boxes; a character that the filter gave, and one that nothing matches, is
/// none of the font.
std::vector<std::optional<double>> Values(AnyVariable& Object, int Line)
{
    const CharReader& reader = ReaderOf(Object);
    const wchar_t code = reader.CharCode(Line);
    std::vector<std::optional<double>> values(std::size(columns));
    values[0] = Line;
    if (code == 0) return values;
    values[characterColumn] = code;
    values[2] = reader.CharScore(Line);
    values[3] = reader.CharContrast(Line);
    if (const int match = reader.MatchingFontChar(Line); match >= 0) values[4] = match;
    return values;
}

/// The font: its samples, or with the box off what is compared of them. A press chooses a character, which a key
/// deletes.
class FontHandles final : public PlotHandles
{
public:
    void Draw(AnyVariable& Object, int Width, int) override
    {
        CharReader& reader = ReaderOf(Object);
        if (chosen_ >= reader.NumFontChars) chosen_ = -1;
        reader.ChooseFontChar(chosen_);
        width_ = Width;
        reader.DrawFontChars(margin, margin, Width - margin, gap, codeHeight, isRaw_, true, false);
    }
    std::optional<Qt::CursorShape> Hit(AnyVariable& Object, int X, int Y) override
    {
        CharReader& reader = ReaderOf(Object);
        reader.HitFontChar(X, Y, margin, margin, width_ - margin, gap, codeHeight, isRaw_, true, false);
        under_ = reader.HitFontIndex;
        if (under_ < 0) return std::nullopt;
        return Qt::SizeAllCursor;
    }
    void Press(AnyVariable&) override { chosen_ = chosen_ == under_ ? -1 : under_; }
    bool KeyPressed(AnyVariable& Object, int Key) override
    {
        if (Key != Qt::Key_Delete || chosen_ < 0) return false;
        DeleteFontChar(Object, chosen_);
        chosen_ = -1;
        return true;
    }
    void Switch(std::size_t, bool IsChecked) override { isRaw_ = IsChecked; }

private:
    static constexpr int margin = 5, gap = 5, codeHeight = 20;

    bool isRaw_ = true;
    int width_ = 0, under_ = -1, chosen_ = -1;
};

constexpr PlotBox boxes[] = {{L"Raw"}};
constexpr PlotCommand commands[] = {{L"&Delete Selected Character", Qt::Key_Delete}};
constexpr PlotRow plot{.Width = 512,
                       .Height = 160,
                       .Color = Blue,
                       .MakeHandles = []() -> std::unique_ptr<PlotHandles> { return std::make_unique<FontHandles>(); },
                       .Boxes = boxes,
                       .Commands = commands};
constexpr OverlayRow overlay{.Hit = Hit, .Press = Press, .HitsOnRelease = false, .Draw = Draw};
constexpr SheetView sheet{.Menu = sheetMenu::Tabs, .PlotPage = L"Font", .Options = options, .Buttons = buttons};
const FeaturesRow features{.MinimumWidth = 240,
                           .Columns = Columns,
                           .Count = Count,
                           .Values = Values,
                           .CharacterColumn = characterColumn,
                           .SelectsRows = true,
                           .IsSorted = true,
                           .Selected = Selected,
                           .Select = Select,
                           .CopyLabel = L"&Copy to Clipboard"};

} // namespace

extern const ObjectView viewCharReader{
    .Type = CodeOf(L"CharReader"), .Overlay = &overlay, .Sheet = &sheet, .Plot = &plot, .Features = &features};

} // namespace TeskPlus
