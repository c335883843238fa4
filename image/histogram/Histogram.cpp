// The counts of a histogram: setting up, counting, running sums, access, text.
#include "image/Histogram.h"

#include "image/core/GrayDepth.h"
#include "image/histogram/HistogramFrame.h"
#include "image/histogram/MaskedCounts.h"
#include "measure/Region.h"

#include <cstring>

namespace Tesk {

using namespace levels;

namespace {

bool IsCounted(PixelTypes type)
{
    return type == Gray || type == Gray16 || type == Rgb;
}

int EntriesOf(PixelTypes type)
{
    return type == Gray16 ? Gray16Levels() : byteLevels;
}

template <typename Count>
void AddCounts(const Count* counts, int size, std::int32_t* samples, int stride)
{
    for (int i = 0; i < size; i++, samples += stride)
        *samples = CountSample(*samples + static_cast<std::int64_t>(counts[i]));
}

} // namespace

/// Stands ready for counts of a type of source, zero where they are not to be kept.
bool Histogram::SetUp(const Entry& entry, PixelTypes type, int entries, bool clear)
{
    const PixelTypes wanted = type == Rgb ? Rgb : Gray;
    if (StoreLength == 0) clear = true;
    if (!clear) {
        if (Type != wanted)
            return !entry.Refuse(UnsupportedType, L"Histogram pixel Type (%ls) not supported for this operation",
                                 PixelTypeName(Type));
        if (StoreLength != entries)
            return !entry.Refuse(IncompatibleSize, L"This profile has %d entries instead of %d", int(StoreLength),
                                 entries);
        Profile::Window();
        if (DetachIfShared()) return true;
    } else if (TrySet(entries, wanted)) {
        Source = {};
        std::memset(First, 0, static_cast<std::size_t>(entries) * static_cast<std::size_t>(int(ElementSize)));
        return true;
    }
    return !entry.Refuse(CannotAllocate, L"Cannot allocate the profile Buffer");
}

void Histogram::Compute(const Image& Src, bool Clear)
{
    const Entry entry("Tesk::Histogram::Compute");
    if (entry.Refuses(CheckImage(Src))) return;
    if (!IsCounted(Src.Type)) {
        entry.Refuses(RefuseType(Src.Type));
        return;
    }
    const int entries = EntriesOf(Src.Type);
    if (!SetUp(entry, Src.Type, entries, Clear)) return;
    Guarded(entry, [&] {
        if (Src.Type == Gray) {
            AddCounts(CountGray(Src).data(), entries, Samples(), 1);
        } else if (Src.Type == Gray16) {
            AddCounts(CountGray16(Src, entries).data(), entries, Samples(), 1);
        } else {
            const auto counts = CountRgb(Src);
            for (int c = 0; c < 3; c++)
                AddCounts(counts[static_cast<std::size_t>(c)].data(), entries, Samples() + c, 3);
        }
    });
}

void Histogram::Compute(const Image& Src, const Region& Mask, bool Clear)
{
    const Entry entry("Tesk::Histogram::Compute");
    if (entry.Refuses(CheckImage(Src))) return;
    if (!IsCounted(Src.Type)) {
        entry.Refuses(RefuseType(Src.Type));
        return;
    }
    const int entries = EntriesOf(Src.Type), numbers = Src.Type == Rgb ? 3 * entries : entries;
    Guarded(entry, [&] {
        const std::vector<std::uint64_t> counts = CountMasked(Src, Mask.Runs(), entries);
        if (SetUp(entry, Src.Type, entries, Clear)) AddCounts(counts.data(), numbers, Samples(), 1);
    });
}

void Histogram::Compute(const Profile& Src, bool Clear)
{
    const Entry entry("Tesk::Histogram::Compute");
    if (entry.Refuses(CheckProfile(Src))) return;
    if (!IsCounted(Src.Type)) {
        entry.Refuse(UnsupportedType, L"The profile Type (%ls) is not supported for this operation",
                     PixelTypeName(Src.Type));
        return;
    }
    const int entries = EntriesOf(Src.Type), channels = Channels(Src.Type);
    const std::ptrdiff_t numbers = static_cast<std::ptrdiff_t>(Src.Length) * channels;
    for (std::ptrdiff_t i = 0; i < numbers; i++)
        if (Src.Samples()[i] < 0 || Src.Samples()[i] >= entries) {
            entry.Refuse(UnsupportedType, L"This profile holds values larger than the allowed gray range, rescale it");
            return;
        }
    // What is counted may be these very counts: they stay as they are while the new ones grow.
    Profile held;
    held.ShallowCopy(Src, true);
    if (!Clear) Detach(true);
    if (!SetUp(entry, held.Type, entries, Clear)) return;
    for (std::ptrdiff_t i = 0; i < numbers; i++) {
        std::int32_t& count = Samples()[std::ptrdiff_t{held.Samples()[i]} * channels + i % channels];
        count = CountSample(std::int64_t{count} + 1);
    }
}

/// Stands ready for the sums of the counts of a window, at the same levels: elsewhere than in place, in a copy of the
/// whole store. False without memory.
bool Histogram::SetUpSums(const Histogram& Src, Profile& held)
{
    if (First == Src.First && Length == Src.Length && Type == Src.Type) return Prepare(Src, *this, Src.Type, held);
    held.ShallowCopy(Src, true);
    if (!TrySet(held.StoreLength, held.Type)) return false;
    const std::ptrdiff_t size = ElementSize;
    std::memcpy(First, held.First - size * held.I, static_cast<std::size_t>(size * StoreLength));
    Scale = held.Scale;
    Source = held.Source;
    Profile::Window(held.I, held.Length);
    return true;
}

void Histogram::Cumulate(const Histogram& Src)
{
    const Entry entry("Tesk::Histogram::Cumulate");
    if (Src.Length < 1) {
        entry.Refuse(VoidObject, L"Void histogram");
        return;
    }
    if (!IsGray(Src.Type) && Src.Type != Rgb) {
        entry.Refuse(UnsupportedType, L"Histogram pixel Type (%ls) not supported for this operation",
                     PixelTypeName(Src.Type));
        return;
    }
    Profile held;
    if (!SetUpSums(Src, held)) {
        entry.Refuse(CannotAllocate, L"Cannot allocate the profile Buffer");
        return;
    }
    const int channels = Channels(Type);
    for (int c = 0; c < channels; c++) {
        std::int64_t sum = 0;
        for (std::ptrdiff_t i = c; i < static_cast<std::ptrdiff_t>(Length) * channels; i += channels)
            Samples()[i] = Saturated(sum += held.Samples()[i]);
    }
}

int& Histogram::Bin(int Index) const
{
    const Entry entry("Tesk::Histogram::Bin");
    thread_local int dummy = 0;
    if (Length < 1)
        entry.Refuse(VoidObject, L"Void histogram");
    else if (!IsGray(Type))
        entry.Refuse(UnsupportedType, L"Histogram pixel Type (%ls) not supported for this operation",
                     PixelTypeName(Type));
    else if (Index < 0 || Index >= Length)
        entry.Refuse(OutOfRange, L"The element index (%d) is out of the histogram range [0..%d]", Index, Length - 1);
    else
        return Samples()[Index];
    return dummy;
}

const char* Histogram::ToAsciiString(int Index) const
{
    const Entry entry("Tesk::Histogram::ToAsciiString");
    if (Length < 1) {
        entry.Refuse(VoidObject, L"Void histogram");
        return "";
    }
    const std::int64_t from = Index == -1 ? 0 : Index < 0 ? std::int64_t{Length} + Index : Index;
    if (from < 0 || from >= Length) {
        entry.Refuse(OutOfRange, L"The element index (%d) is out of the histogram range [0..%d]", Index, Length - 1);
        return "";
    }
    const int end = Index == -1 ? int(Length) : static_cast<int>(from) + 1;
    const int channels = Channels(Type);
    Guarded(entry, [&] {
        text_ = channels == 1 ? "Level\tCount\n" : "Level\tRed\tGreen\tBlue\n";
        for (int i = static_cast<int>(from); i < end; i++) {
            text_ += std::to_string(I + i);
            for (int c = 0; c < channels; c++)
                text_ += '\t' + std::to_string(Samples()[static_cast<std::ptrdiff_t>(i) * channels + c]);
            text_ += '\n';
        }
    });
    return text_.c_str();
}

} // namespace Tesk
