// The model of a geometry, and the scale between pixels and true lengths.
#include "image/Geometry.h"

#include "foundation/Entry.h"
#include "image/geometry/GeometryModel.h"

#include <cmath>

namespace Tesk {

ReadOnly<double, Geometry> Geometry::ScaleToPixel(1.0);
ReadOnly<double, Geometry> Geometry::ScaleFromPixel(1.0);

int Geometry::TryCalibrate(double lengthInPixels, double trueLength)
{
    if (lengthInPixels == 0 || trueLength == 0) return Status::Format(OutOfRange, L"Zero sizes are not allowed");
    const double toPixel = lengthInPixels / trueLength, fromPixel = trueLength / lengthInPixels;
    if (!std::isnormal(toPixel) || !std::isnormal(fromPixel))
        return Status::Format(OutOfRange, L"The sizes (%g, %g) give no usable scale", lengthInPixels, trueLength);
    ScaleToPixel = toPixel;
    ScaleFromPixel = fromPixel;
    return NoError;
}

void Geometry::SimpleCalibration(double LengthInPixels, double TrueLength)
{
    const Entry entry("Tesk::Geometry::SimpleCalibration");
    entry.Refuses(TryCalibrate(LengthInPixels, TrueLength));
}

Geometry::Geometry(const Geometry& Other)
{
    *this = Other;
}

Geometry& Geometry::operator=(const Geometry& Other)
{
    if (this == &Other) return *this;
    ShallowCopy(Other, true);
    try {
        anchors_.Write();
    } catch (const std::bad_alloc&) {
        // The anchors stay shared.
    }
    return *this;
}

void Geometry::ShallowCopy(const Geometry& Src, bool)
{
    Status::Error().Code = NoError;
    Model = Src.Model;
    NumAnchors = Src.NumAnchors;
    forward_ = Src.forward_;
    inverse_ = Src.inverse_;
    anchors_ = Src.anchors_;
}

void Geometry::Take(enum RegistrationModels model)
{
    if (model == Model) return;
    Model = model;
    forward_ = inverse_ = models::Identity(model);
}

bool Geometry::FitAnchors(const Entry& entry, enum RegistrationModels model, const Image& src)
{
    const std::span<const AnchorPair> anchors = Anchors();
    if (const int code = models::RefuseCount(model, anchors.size())) {
        Status::Raise(code, "Tesk::Failure");
        return false;
    }
    const bool radial = model == Quadratic || model == General;
    if (radial && entry.Refuses(CheckImage(src))) return false;
    models::Fit fit;
    if (entry.Refuses(models::FitModel(model, anchors, {(src.Width - 1) * 0.5, (src.Height - 1) * 0.5}, fit)))
        return false;
    forward_ = fit.forward;
    inverse_ = fit.inverse;
    return true;
}

void Geometry::ModelFit(enum RegistrationModels Model, const Image& Src)
{
    const Entry entry("Tesk::Geometry::ModelFit");
    Take(Model);
    if (Model >= Translation && Model <= Rational) FitAnchors(entry, Model, Src);
}

void Geometry::PureScaling(double X, double Y, double U, double V)
{
    const Entry entry("Tesk::Geometry::PureScaling");
    if (X == 0 || Y == 0) {
        entry.Refuse(OutOfRange, L"Zero sizes are not allowed");
        return;
    }
    const double u = U == 0 ? X : U, v = V == 0 ? Y : V;
    Coefficients forward{}, inverse{};
    forward[0] = Y / X;
    forward[4] = v / u;
    inverse[0] = X / Y;
    inverse[4] = u / v;
    for (const double scale : {forward[0], forward[4], inverse[0], inverse[4]})
        if (!std::isnormal(scale)) {
            entry.Refuse(OutOfRange, L"The sizes (%g, %g, %g, %g) give no usable scale", X, Y, u, v);
            return;
        }
    Model = Scaling;
    forward_ = forward;
    inverse_ = inverse;
}

XY Geometry::MapPoint(const XY& Point) const
{
    const Entry entry("Tesk::Geometry::MapPoint");
    return models::Map(Model, forward_, Point);
}

XY Geometry::ReverseMapPoint(const XY& Point) const
{
    const Entry entry("Tesk::Geometry::ReverseMapPoint");
    return models::Map(Model, inverse_, Point);
}

} // namespace Tesk
