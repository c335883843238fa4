// Geometric models in ".cal" files.
#include "foundation/Archive.h"
#include "image/Geometry.h"

#include <algorithm>
#include <cmath>

namespace Tesk {

namespace {

constexpr ArchiveFormat format = {"TCAL",
                                  2,
                                  L"File \"%ls\" is not a Geometry Model",
                                  L"The version number \"%d\" of this Geometry Model is too high",
                                  2,
                                  L"The version number \"%d\" of this Geometry Model is no more supported"};

bool AreFinite(const Geometry::Coefficients& c)
{
    return std::all_of(c.begin(), c.end(), [](double v) { return std::isfinite(v); });
}

} // namespace

void Geometry::Transfer(Archive& Block)
{
    Block.Header(format);
    RegistrationModels model = Model;
    Coefficients forward = forward_, inverse = inverse_;
    double fromPixel = ScaleFromPixel, toPixel = ScaleToPixel;
    Block(model);
    Block.Elements(forward.data(), forward.size());
    Block.Elements(inverse.data(), inverse.size());
    Block(fromPixel, toPixel);
    if (!Block.Reading() || !Block.Good() || Block.Ended()) return;
    if (!AreFinite(forward) || !AreFinite(inverse))
        Block.Refuse(OutOfRange, L"The coefficients of this Geometry Model are not finite");
    if (!std::isnormal(fromPixel) || !std::isnormal(toPixel))
        Block.Refuse(OutOfRange, L"The scales (%g, %g) of this Geometry Model are not usable", fromPixel, toPixel);
    if (!Block.Good()) return;
    Model = model;
    forward_ = forward;
    inverse_ = inverse;
    anchors_.Reset();
    NumAnchors = 0;
    ScaleFromPixel = fromPixel;
    ScaleToPixel = toPixel;
}

void Geometry::Read(const char* PathName)
{
    ReadModel("Tesk::Geometry::Read", PathName, *this);
}

void Geometry::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::Geometry::Read", PathName, *this);
}

void Geometry::Write(const char* PathName) const
{
    WriteModel("Tesk::Geometry::Write", PathName, *this);
}

void Geometry::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::Geometry::Write", PathName, *this);
}

} // namespace Tesk
