// Blobs are drawn on their picture with what has been measured of them, and have a sheet with a table of all features.
// A press on a blob in the picture selects its row in the table, and the other way round.
#include "workbench/views/objects/ObjectView.h"

#include "engine/TypeNames.h"
#include "measure/Blobs.h"
#include "workbench/views/Text.h"

#include <algorithm>
#include <utility>

namespace TeskPlus {

namespace {

constexpr SheetOption options[] = {{L"View filled", false}, {L"View all", true}};
enum optionPlace : std::size_t
{
    ViewFilled,
    ViewAll
};

Blobs& BlobsOf(AnyVariable& object)
{
    return static_cast<Var<Blobs>&>(object).Value;
}

/// `Graph::AutoColors` for the time of a block: with it blobs take the colors of hit, selected and other ones, without
/// it those that are set.
class ColorsOfState
{
public:
    explicit ColorsOfState(bool isAutomatic) { Graph::AutoColors = isAutomatic; }
    ~ColorsOfState() { Graph::AutoColors = former_; }
    ColorsOfState(const ColorsOfState&) = delete;
    ColorsOfState& operator=(const ColorsOfState&) = delete;

private:
    bool former_ = Graph::AutoColors;
};

/// What is drawn of the blobs once a feature has a column.
struct FeatureMark
{
    int First, Last; ///< any of these features
    int Color;
    void (*Draw)(Blobs& Object, const Image* Picture, int Which);
};

void Box(Blobs& object, const Image*, int which)
{
    object.DrawBox(which);
}

/// The picture whose pixels weigh; null where it has no gray values: then only what has been worked out is drawn.
const Image* Weights(const Image* picture)
{
    return picture && (picture->Type == Gray || picture->Type == Gray16) ? picture : nullptr;
}

void Centroid(Blobs& object, const Image* picture, int which)
{
    if (const Image* weights = Weights(picture))
        object.DrawCentroid(*weights, which);
    else
        object.DrawCentroid(which);
}

void Ellipsoid(Blobs& object, const Image* picture, int which)
{
    if (const Image* weights = Weights(picture))
        object.DrawEllipsoid(*weights, which);
    else
        object.DrawEllipsoid(which);
}

void FeretBox(Blobs& object, const Image*, int which)
{
    object.DrawFeretBox(which);
}

void DiametralBox(Blobs& object, const Image*, int which)
{
    object.DrawDiametralBox(which);
}

void Center(Blobs& object, const Image*, int which)
{
    object.DrawCenter(which);
}

void Ellipse(Blobs& object, const Image*, int which)
{
    object.DrawEllipse(which);
}

void Hull(Blobs& object, const Image*, int which)
{
    object.DrawHull(which);
}

void Outline(Blobs& object, const Image*, int which)
{
    object.DrawOutline(which);
}

/// Shades of green for the selected ones, of red for the others.
constexpr FeatureMark selectedMarks[] = {{BlobBox, BlobBox, 14, Box},
                                         {BlobCentroid, BlobCentroid, 44, Centroid},
                                         {BlobFeretBox, BlobFeretBox, 28, FeretBox},
                                         {BlobDiametralBox, BlobDiametralBox, 28, DiametralBox},
                                         {BlobCenter, BlobCenter, 30, Center},
                                         {BlobEllipse, BlobEllipse, 46, Ellipse},
                                         {BlobEllipsoid, BlobEllipsoid, 60, Ellipsoid},
                                         {BlobConvexArea, BlobConvexPerimeterRatio, 62, Hull},
                                         {BlobOutline, BlobOutline, 44, Outline},
                                         {BlobPerimeter, BlobPerimeter, 46, Outline}};
constexpr FeatureMark otherMarks[] = {{BlobBox, BlobBox, 11, Box},
                                      {BlobFeretBox, BlobFeretBox, 19, FeretBox},
                                      {BlobDiametralBox, BlobDiametralBox, 19, DiametralBox},
                                      {BlobCenter, BlobCenter, 27, Center},
                                      {BlobCentroid, BlobCentroid, 35, Centroid},
                                      {BlobEllipse, BlobEllipse, 43, Ellipse},
                                      {BlobEllipsoid, BlobEllipsoid, 51, Ellipsoid},
                                      {BlobConvexArea, BlobConvexArea, 59, Hull},
                                      {BlobOutline, BlobOutline, 35, Outline},
                                      {BlobPerimeter, BlobPerimeter, 43, Outline}};

void DrawShapes(const Blobs& blobs, int which, bool isFilled)
{
    const ColorsOfState colors(true);
    if (isFilled)
        blobs.DrawBlob(which);
    else
        blobs.DrawOutline(which);
}

void DrawMarks(Blobs& blobs, std::span<const FeatureMark> marks, const Image* picture, int which)
{
    const ColorsOfState colors(false);
    for (const FeatureMark& mark : marks) {
        bool isComputed = false;
        for (int feature = mark.First; feature <= mark.Last; feature++)
            isComputed = isComputed || blobs.IsComputed(-1, feature);
        if (!isComputed) continue;
        const auto color = static_cast<PredefinedColors>(mark.Color);
        DrawIn(color, [&] { mark.Draw(blobs, picture, which); });
    }
}

void Draw(AnyVariable& Object, const IController& Child)
{
    Blobs& blobs = BlobsOf(Object);
    if (blobs.NumBlobs < 1) return;
    const bool isFilled = OptionOf(Child, ViewFilled, false), showsAll = OptionOf(Child, ViewAll, true);
    const Image* picture = PictureOf(Child.MotherController());
    DrawShapes(blobs, AllSelected, isFilled);
    DrawMarks(blobs, selectedMarks, picture, AllSelected);
    if (showsAll) DrawShapes(blobs, AllDeselected, isFilled);
    DrawMarks(blobs, otherMarks, picture, AllDeselected);
    // Marks may lie on the outline that tells which blob was hit.
    const int hit = Blobs::HitBlobIndex;
    if (!isFilled && hit >= 0 && hit < int{showsAll ? blobs.NumBlobs : blobs.NumSelectedBlobs})
        DrawShapes(blobs, hit, false);
}

OverlayHit Hit(IController& Child, int X, int Y)
{
    const Blobs* blobs = ObjectOf<Blobs>(&Child);
    const int former = Blobs::HitBlobIndex;
    const bool isHit = blobs && blobs->HitBlob(X, Y, All) != MinInt;
    // Hovering selects nothing.
    Blobs::HitBlobIndex = former;
    return {isHit, isHit ? Qt::CrossCursor : Qt::ArrowCursor};
}

/// The blob that was pressed, for all pictures, until the run that follows is over: a segmentation within it forgets
/// the blob that was hit.
int pressedBlob = MinInt;

bool Press(IController& Child, int X, int Y)
{
    const Blobs* blobs = ObjectOf<Blobs>(&Child);
    if (!blobs) return false;
    pressedBlob = blobs->HitBlob(X, Y, All);
    return pressedBlob != MinInt;
}

void PassSelection()
{
    if (pressedBlob != MinInt) Blobs::HitBlobIndex = std::exchange(pressedBlob, MinInt);
}

/// The features in the columns of the blobs' table, behind its first ones, which tell of runs.
std::vector<int> FeaturesOf(const Blobs& blobs)
{
    constexpr int firstColumn = 2;
    std::vector<int> features;
    for (int column = firstColumn; column < blobs.NumFeatures; column++)
        features.push_back(blobs.WhichFeature(column));
    return features;
}

std::vector<QString> Columns(AnyVariable& Object)
{
    const Blobs& blobs = BlobsOf(Object);
    std::vector<QString> columns{"Index"};
    for (const int feature : FeaturesOf(blobs))
        columns.push_back(Qt16(blobs.UnicodeName(feature)));
    return columns;
}

int Count(AnyVariable& Object)
{
    return BlobsOf(Object).NumBlobs;
}

std::vector<std::optional<double>> Values(AnyVariable& Object, int Line)
{
    // Reading through a constant object takes no copy of what is shared.
    const Blobs& blobs = BlobsOf(Object);
    std::vector<std::optional<double>> values{Line};
    for (const int feature : FeaturesOf(blobs))
        if (!blobs.IsComputed(Line, feature))
            values.emplace_back();
        else if (blobs.Type(feature) == Int)
            values.emplace_back(blobs.IntFeature(Line, feature));
        else
            values.emplace_back(static_cast<double>(blobs.FloatFeature(Line, feature)));
    return values;
}

int Selected(AnyVariable& Object)
{
    const int hit = Blobs::HitBlobIndex;
    return hit >= 0 && hit < BlobsOf(Object).NumBlobs ? hit : -1;
}

void Select(AnyVariable&, int Line)
{
    Blobs::HitBlobIndex = Line;
}

constexpr OverlayRow overlay{.Hit = Hit, .Press = Press, .HitsOnRelease = false, .Draw = Draw};
constexpr SheetView sheet{.Options = options};
/// The lines stand in the order of the blobs until the user sorts them by a column.
const FeaturesRow features{.MinimumWidth = 110,
                           .Columns = Columns,
                           .Count = Count,
                           .Values = Values,
                           .RestsWhileDragging = true,
                           .SelectsRows = true,
                           .IsSorted = true,
                           .Selected = Selected,
                           .Select = Select,
                           .CopyLabel = L"&Copy to Clipboard"};

} // namespace

extern const ObjectView viewBlobs{
    .Type = CodeOf(L"Blobs"), .Overlay = &overlay, .Sheet = &sheet, .Features = &features, .AfterRun = PassSelection};

} // namespace TeskPlus
