// A whole job as a sequence: round parts are told from the belt, measured in millimetres by the target beside them,
// chosen by their features, tabled and written.
#include "engine/Sequence.h"
#include "foundation/Angles.h"
#include "gauge/EdgeArc.h"
#include "gauge/EdgeRectangle.h"
#include "image/Geometry.h"
#include "image/Morpho.h"
#include "measure/Blobs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

using namespace TeskTests;

namespace {

class Inspection : public SequenceTest
{
protected:
    ~Inspection() override { Geometry::SimpleCalibration(1, 1); }

    Operation& Add(const wchar_t* className, const wchar_t* method, const wchar_t* label)
    {
        return Append(Engine::FindMethod(className, method, label));
    }
    void Bind(Operation& operation, const wchar_t* argument, const Operation& source, const wchar_t* output = L"Dst")
    {
        engine_.ReplaceOperationArgument(IndexOf(operation), static_cast<int>(PlaceOf(operation, argument)),
                                         source.Args[PlaceOf(source, output)].Variable);
    }
    /// Detection by a new gauge, which then moves onto the edge and detects again. The first of these operations.
    Operation& Settle(const wchar_t* gauge)
    {
        Operation& first = Add(gauge, L"Detect", L"Detect");
        Bind(Add(gauge, L"Realign", L"Realign"), gauge, first, gauge);
        Bind(Add(gauge, L"Detect", L"Detect"), gauge, first, gauge);
        return first;
    }

    /// Takes the belt away and brings the parts to one brightness.
    void FlattenLight(const std::string& picture)
    {
        constexpr int widest = 91;
        SetPath(Add(L"Image", L"Read", L"Read  from File"), picture);
        Operation& smooth = Add(L"Kernel", L"Binomial", L"Binomial 3 x 3");
        Operation& open = Add(L"Morpho", L"Open", L"Open");
        Value<Morpho>(open, L"Morpho").Square(widest);
        const auto blur = [this]() -> Operation& {
            Operation& box = Add(L"Kernel", L"BoxLowPass", L"Box");
            Value<int>(box, L"FilterWidth") = Value<int>(box, L"FilterHeight") = widest / 2;
            return box;
        };
        Operation& belt = blur();
        Operation& raised = Add(L"Operator", L"AddCorrect", L"Additive - Gray");
        Bind(raised, L"Src", smooth);
        Bind(raised, L"SrcWhite", belt);
        Operation& dilate = Add(L"Morpho", L"Dilate", L"Dilate");
        EXPECT_EQ(Value<Morpho>(dilate, L"Morpho").Width, widest) << "the same element";
        blur();
        Operation& peak = Add(L"Operator", L"Maximize", L"Const max Image");
        Value<int>(peak, L"Const") = 40;
        Operation& flat = Add(L"Operator", L"MultiplyCorrect", L"Multiplicative - Gray");
        Bind(flat, L"Src", raised);
        Bind(flat, L"SrcWhite", peak);
        Value<int>(flat, L"White") = 200;
    }
};

/// The outer and the inner diameter of a ring with an area and an ellipse of inertia.
std::pair<double, double> Diameters(const Blobs& blobs, int i)
{
    const double sum = double{blobs.FloatFeature(i, BlobEllipseWidth)} * blobs.FloatFeature(i, BlobEllipseHeight),
                 difference = 4 * blobs.FloatFeature(i, BlobWorldArea) / std::numbers::pi;
    return {std::sqrt((sum + difference) / 2), std::sqrt(std::max((sum - difference) / 2, 0.0))};
}

TEST_F(Inspection, OfWashersFindsTheirTrueDiameters)
{
    const std::string samples = TESK_SAMPLES, folder = testing::TempDir();
    FlattenLight(samples + "/washers.png");
    Operation& calibrate = Add(L"Geometry", L"CalibrateTarget", L"Calibrate with a Target");
    Value<double>(calibrate, L"GridStep") = 4;
    Value<bool>(calibrate, L"WhiteOnBlack") = true;
    SetPath(Add(L"Geometry", L"Write", L"Write  to File"), folder + "camera.cal");
    Operation& segment = Add(L"Blobs", L"Segment", L"Automatic");
    Value<int>(segment, L"MinimumArea") = 500;
    Add(L"Blobs", L"BorderSelect", L"Border of an Image");
    Value<Features>(Add(L"Blobs", L"Evaluate", L"Evaluate"), L"Feature") = BlobWorldArea;
    // Round parts: the axes of the ellipse differ by less than a fifth.
    Operation& round = Add(L"Blobs", L"ByFeatureSelect", L"Fractional Feature");
    Value<Features>(round, L"Feature") = BlobEccentricity;
    Value<float>(round, L"Maximum") = 0.768f;
    Value<SelectionMode>(round, L"Selection") = Tesk::Remove;
    Value<RangeMode>(round, L"Range") = Outside;
    Operation& sort = Add(L"Blobs", L"ByFeatureSort", L"Sort");
    Value<Features>(sort, L"Feature") = BlobWorldArea;
    Value<bool>(sort, L"Increasing") = false;
    Operation& pixels = Add(L"Region", L"BlobAppend", L"Blobs");
    Value<BlobSelection>(pixels, L"BlobIndex") = AllSelected;
    SetPath(Add(L"Region", L"Write", L"Write  to File"), folder + "parts.rgn");
    engine_.Execute();
    ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    EXPECT_GE(Value<Geometry>(calibrate, L"Geometry").NumAnchors, 20);

    Blobs& blobs = Value<Blobs>(sort, L"Blobs");
    std::vector<std::pair<double, double>> truth, found;
    std::ifstream sizes(samples + "/washers.txt");
    std::string names;
    std::getline(sizes, names);
    for (double outer, inner; sizes >> outer >> inner;)
        truth.emplace_back(outer, inner);
    ASSERT_GE(truth.size(), 5u);
    for (int i = 0; i < blobs.NumSelectedBlobs; i++)
        found.push_back(Diameters(blobs, i));
    ASSERT_EQ(found.size(), truth.size()) << "other parts are not round";
    std::sort(truth.begin(), truth.end());
    std::sort(found.begin(), found.end());
    for (std::size_t i = 0; i < truth.size(); i++) {
        EXPECT_NEAR(found[i].first, truth[i].first, 0.05);
        EXPECT_NEAR(found[i].second, truth[i].second, 0.05);
    }
    // The table: a line for the names, and one for each part that was selected, the largest first.
    const std::wstring table = blobs.ToUnicodeString(BlobWorldArea, AllSelected);
    EXPECT_EQ(static_cast<std::size_t>(std::count(table.begin(), table.end(), L'\n')), truth.size() + 1);
    std::wistringstream lines(table.substr(table.find(L'\n')));
    double before = 1e9;
    for (double area; lines >> area; before = area)
        EXPECT_LE(area, before);
    Region written;
    written.Read((folder + "parts.rgn").c_str());
    EXPECT_GT(written.NumRuns, 0);
    EXPECT_EQ(written.Area(), blobs.FeatureAverage(BlobArea, Image(), AllSelected, false));
    Geometry camera;
    camera.Read((folder + "camera.cal").c_str());
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_NEAR(Geometry::ScaleFromPixel, 0.1, 0.001);
}

/// What a plate is measured by. The gauges stand around its middle, in pixels.
struct PlateGauges
{
    EdgeArc& bore;
    EdgeRectangle &sides, &slot;

    void Place(XY middle, double degrees)
    {
        const double c = std::cos(ToRadians(degrees)), s = std::sin(ToRadians(degrees));
        const auto at = [&](double x, double y) { return middle + XY(c * x - s * y, s * x + c * y); };
        constexpr double probe = 32;
        bore.Locate(at(-140, 0), 118, probe);
        sides.Locate(middle, XY(440, 404), degrees, probe);
        slot.Locate(at(140, 20), XY(120, 84), 30 + degrees, probe);
    }
    std::array<double, 4> Sizes() const
    {
        return {2 * bore.FittedRadius, XY(sides.FittedSize).Y, XY(slot.FittedSize).Y,
                slot.FittedAngle - sides.FittedAngle};
    }
};

TEST_F(Inspection, OfAPlateGivesTheSameSizesWhereverItLies)
{
    constexpr double millimetresPerPixel = 0.05;
    const std::string samples = TESK_SAMPLES;
    Operation& read = Add(L"Image", L"Read", L"Read  from File");
    SetPath(read, samples + "/plate.png");
    Operation& scale = Add(L"Geometry", L"SimpleCalibration", L"Simple Calibration");
    Value<double>(scale, L"LengthInPixels") = 1;
    Value<double>(scale, L"TrueLength") = millimetresPerPixel;
    Operation &first = Settle(L"EdgeArc"), &second = Settle(L"EdgeRectangle"), &third = Settle(L"EdgeRectangle");
    PlateGauges gauges{Value<EdgeArc>(first, L"EdgeArc"), Value<EdgeRectangle>(second, L"EdgeRectangle"),
                       Value<EdgeRectangle>(third, L"EdgeRectangle")};
    ASSERT_NE(&gauges.sides, &gauges.slot);
    for (EdgePoint* gauge : {static_cast<EdgePoint*>(&gauges.bore), static_cast<EdgePoint*>(&gauges.sides),
                             static_cast<EdgePoint*>(&gauges.slot)}) {
        gauge->Breadth = 5;
        gauge->Smoothing = 5;
    }
    gauges.bore.Density = gauges.sides.Density = gauges.slot.Density = 2;
    gauges.sides.FourSides = gauges.slot.FourSides = false;
    gauges.Place(XY(401, 298), 0);
    engine_.Execute();
    ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    const std::array<double, 4> sizes = gauges.Sizes();

    std::ifstream file(samples + "/plate.txt");
    std::string names;
    std::getline(file, names);
    for (const double size : sizes) {
        double truth = 0;
        file >> truth;
        EXPECT_NEAR(size, truth, 1.5 * millimetresPerPixel) << names;
    }

    // The part moves and turns: the gauges are put down near it.
    SetPath(read, samples + "/plate-moved.png");
    gauges.Place(XY(389, 311), 14);
    for (const Operation* operation : {&first, &second, &third})
        engine_.ChangeVariable(operation->Args[0].Variable);
    engine_.Execute();
    ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    const std::array<double, 4> moved = gauges.Sizes();
    for (std::size_t i = 0; i < sizes.size(); i++)
        EXPECT_NEAR(moved[i], sizes[i], 0.02 * (i == 3 ? 1 : millimetresPerPixel)) << i;
    EXPECT_NEAR(gauges.sides.FittedAngle, 14.3, 0.05);
}

} // namespace
