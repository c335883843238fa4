// Levels: building, access, drawing.
#include "image/Pyramid.h"

#include "foundation/Entry.h"
#include "foundation/Graph.h"
#include "image/core/Destination.h"
#include "image/core/Refusals.h"
#include "image/pyramid/PyramidScale.h"

namespace Tesk {

namespace {

/// Gives a level its size; one without pixels becomes void.
bool SizeLevel(Image& level, int width, int height, PixelTypes type)
{
    if (width < 1 || height < 1) {
        level.ShallowCopy(Image(), true);
        return true;
    }
    // Pixels that a view of an earlier build still holds are left to it.
    level.DetachIfShared(false);
    return level.Fit(width, height, type) == NoError;
}

} // namespace

void Pyramid::Build(const Image& Src, int MinSize, int MaxLevels, bool BaseApart, bool Dyadic)
{
    const Entry entry("Tesk::Pyramid::Build");
    if (entry.Refuses(pyramid::CheckScalable(Src))) return;
    if (MaxLevels == 0) MaxLevels = MaximumLevels;
    if (MaxLevels < 1 || MaxLevels > MaximumLevels) {
        entry.Refuse(OutOfRange, L"The maximum number of levels (%d) must be in range [1..%d]", MaxLevels,
                     MaximumLevels);
        return;
    }
    // The source may be a level of this very pyramid.
    Image base;
    base.ShallowCopy(Src, true);
    if (!BaseApart) {
        if (!SizeLevel(levels_[0], base.Width, base.Height, base.Type)) {
            entry.Refuse(CannotAllocate, images::noImage);
            return;
        }
        images::CopyRows(base, levels_[0]);
    }
    this->BaseApart = BaseApart;
    NumLevels = 1;
    const Image* former = &base;
    while (NumLevels < MaxLevels) {
        const int width = Dyadic ? former->Width >> 1 : former->Width / 3 * 2;
        const int height = Dyadic ? former->Height >> 1 : former->Height / 3 * 2;
        if (Min(width, height) < MinSize) break;
        Image& level = levels_[static_cast<std::size_t>(int(NumLevels))];
        if (!SizeLevel(level, width, height, base.Type)) {
            entry.Refuse(CannotAllocate, images::noImage);
            return;
        }
        if (level.Type != Undefined) pyramid::Reduce(*former, level, Dyadic);
        NumLevels += 1;
        former = &level;
    }
}

int Pyramid::RefuseLevel(int level) const
{
    if (static_cast<unsigned>(level) < static_cast<unsigned>(int(NumLevels))) return NoError;
    if (NumLevels == 0) return Status::Format(VoidObject, L"The pyramid has not been initialized");
    return Status::Format(OutOfRange, L"The level index (%d) must be in range [0..%d]", level, NumLevels - 1);
}

Image& Pyramid::Bitmap(Image& Src, int Level)
{
    const Entry entry("Tesk::Pyramid::Bitmap");
    if (entry.Refuses(RefuseLevel(Level)) || (BaseApart && Level == 0)) return Src;
    return levels_[static_cast<std::size_t>(Level)];
}

Image& Pyramid::Bitmap(int Level)
{
    static Image none;
    const Entry entry("Tesk::Pyramid::Bitmap");
    if (BaseApart && Level == 0) {
        entry.Refuse(CannotAllocate, L"The source image is apart, pass it as an argument");
        return none;
    }
    return entry.Refuses(RefuseLevel(Level)) ? none : levels_[static_cast<std::size_t>(Level)];
}

Site Pyramid::OffsetBelow(int baseHeight, int level) const
{
    if (level == 0) return {0, 0};
    int x = 0;
    for (int l = 1; l < level; l++)
        x += levels_[static_cast<std::size_t>(l)].Width;
    return {x, baseHeight};
}

Site Pyramid::DrawingOffset(const Image& Src, int Level) const
{
    const Entry entry("Tesk::Pyramid::DrawingOffset");
    if (entry.Refuses(RefuseLevel(Level))) return {0, 0};
    return OffsetBelow(BaseHeight(&Src), Level);
}

Site Pyramid::DrawingOffset(int Level) const
{
    const Entry entry("Tesk::Pyramid::DrawingOffset");
    if (BaseApart && Level == 0) {
        entry.Refuse(CannotAllocate, L"The source image is apart, pass it as an argument");
        return {0, 0};
    }
    if (entry.Refuses(RefuseLevel(Level))) return {0, 0};
    return OffsetBelow(BaseHeight(nullptr), Level);
}

/// The height of level 0; none where it is apart and not at hand.
int Pyramid::BaseHeight(const Image* base) const
{
    if (!BaseApart) return levels_[0].Height;
    return base ? int(base->Height) : 0;
}

void Pyramid::DrawFrom(const Image* base, bool atOrigin) const
{
    for (int l = base ? 0 : int(BaseApart); l < NumLevels; l++) {
        const Image& level = base && l == 0 && BaseApart ? *base : levels_[static_cast<std::size_t>(l)];
        if (level.Type == Undefined) continue;
        if (!atOrigin) {
            const Site offset = OffsetBelow(BaseHeight(base), l);
            Graph::SetOrigin(offset.X, offset.Y);
        }
        level.Draw(true);
    }
    if (!atOrigin) Graph::ResetOrigin();
}

void Pyramid::Draw(const Image& Src, bool AtOrigin) const
{
    const Entry entry("Tesk::Pyramid::Draw");
    if (BaseApart && entry.Refuses(CheckImage(Src))) return;
    DrawFrom(&Src, AtOrigin);
}

void Pyramid::Draw(bool AtOrigin) const
{
    const Entry entry("Tesk::Pyramid::Draw");
    DrawFrom(nullptr, AtOrigin);
}

void Pyramid::ShallowCopy(const Pyramid& Src, bool KeepView)
{
    if (this == &Src) return;
    NumLevels = Src.NumLevels;
    BaseApart = Src.BaseApart;
    for (std::size_t l = 0; l < levels_.size(); l++)
        levels_[l].ShallowCopy(Src.levels_[l], KeepView);
}

} // namespace Tesk
