// The boxes that a user gives to a character reader: layouts and preset ones.
#include "foundation/Entry.h"
#include "image/core/Refusals.h"
#include "read/CharReader.h"
#include "read/chars/ReaderState.h"

#include <cstddef>
#include <utility>

namespace Tesk {

using namespace chars;

namespace {

/// Of a list of preset boxes.
constexpr CharBox firstPreset = {0, 10, 30, 20};
constexpr int presetPitch = 40;
constexpr int mostPresets = mostPixels / presetPitch;

} // namespace

void CharReader::CountLayout()
{
    const ReaderState& state = *state_;
    NumLayoutChars = static_cast<int>(state.layout.size());
    NumLayoutStrings = static_cast<int>(FindStrings(state.layout, CharWidth, CharHeight).size());
}

void CharReader::TakeLayout()
{
    const Entry entry("Tesk::CharReader::TakeLayout");
    entry.Refuses(WithMemory(images::noWorkingMemory, [&]() -> int {
        std::vector<CharBox> boxes;
        for (const CharBox& box : state_->Boxes())
            if (!box.IsEmpty()) boxes.push_back(box);
        if (boxes.empty()) return Status::Format(OutOfRange, L"No character is available");
        state_->layout = std::move(boxes);
        state_->placement = Placement();
        CountLayout();
        return NoError;
    }));
}

void CharReader::DropLayout()
{
    const Entry entry("Tesk::CharReader::DropLayout");
    state_->layout.clear();
    CountLayout();
}

int CharReader::TakePresets()
{
    ClearChars();
    const int code = WithMemory(images::noWorkingMemory, [&] {
        state_->TakeFound(state_->preset);
        state_->strings = FindStrings(state_->found, CharWidth, CharHeight);
    });
    return code ? code : TakeChars();
}

void CharReader::PresetBoxes(int Count)
{
    const Entry entry("Tesk::CharReader::PresetBoxes");
    if (Count < 0 || Count > mostPresets) {
        entry.Refuse(OutOfRange, L"The number of boxes (%d) must be in range [0..%d]", Count, mostPresets);
        return;
    }
    const int code = WithMemory(images::noWorkingMemory, [&] {
        state_->preset.assign(static_cast<std::size_t>(Count), firstPreset);
        for (int i = 0; i < Count; i++)
            state_->preset[static_cast<std::size_t>(i)].X += i * presetPitch;
    });
    state_->quadrant = Quadrant;
    if (!entry.Refuses(code)) entry.Refuses(TakePresets());
}

void CharReader::PresetBox(int Index, int X, int Y, int Width, int Height)
{
    const Entry entry("Tesk::CharReader::PresetBox");
    const int count = static_cast<int>(state_->preset.size());
    if (count == 0) {
        entry.Refuse(OutOfRange, L"No preset character box is available");
        return;
    }
    if (Index < 0 || Index >= count) {
        entry.Refuse(OutOfRange, L"The box index (%d) must be in range [0..%d]", Index, count - 1);
        return;
    }
    state_->preset[static_cast<std::size_t>(Index)] = {Clamp(X, -mostPixels, mostPixels),
                                                       Clamp(Y, -mostPixels, mostPixels), Clamp(Width, 1, mostPixels),
                                                       Clamp(Height, 1, mostPixels)};
    entry.Refuses(TakePresets());
}

} // namespace Tesk
