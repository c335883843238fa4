#include "Failures.h"
#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "image/Geometry.h"

using namespace Tesk;

namespace {

using GeometryAnchor = checks::IgnoringFailures;

TEST_F(GeometryAnchor, IsMarkedByACircleInTheSourceAndASquareInTheDestination)
{
    const GraphSettings zoomed(4);
    RecordingTarget target;
    Graph::DrawTo(&target);
    Geometry geometry;
    geometry.Append({10, 20}, {100, 50});
    const auto drawn = [&](auto draw) {
        target.Calls.clear();
        draw();
        std::vector<std::string> shapes;
        for (const std::string& call : target.Calls)
            if (call.starts_with("Ellipse") || call.starts_with("Rectangle")) shapes.push_back(call);
        return shapes;
    };
    // Marks stand in the middle of their pixels: trunc((v + 1) * 4).
    EXPECT_EQ(drawn([&] { geometry.DrawAnchors(1); }), std::vector<std::string>{"Ellipse 45 81 51 87"});
    EXPECT_EQ(drawn([&] { geometry.DrawAnchors(0, -2, 5, false); }),
              std::vector<std::string>{"Rectangle 399 191 409 201"});
    Graph::DrawTo(nullptr);
}

TEST_F(GeometryAnchor, IsDraggedByItsMarkInEitherFrame)
{
    const GraphSettings zoomed(4);
    Geometry geometry;
    geometry.Append({10, 20}, {100, 50});
    geometry.Append({12, 20}, {60, 50});
    EXPECT_EQ(geometry.HitHandle(44, 84), SrcAnchorHandle);
    EXPECT_EQ(geometry.HitHandle(44, 84, 0, 0, false), NoHandle);
    EXPECT_EQ(geometry.HitHandle(38, 84), NoHandle);
    geometry.Drag(400, 400);
    EXPECT_EQ(geometry.Src(0).X, 10);
    // Both marks are near; the nearer one is taken, and moves by as much as the pointer.
    EXPECT_EQ(geometry.HitHandle(49, 84), SrcAnchorHandle);
    geometry.Drag(49 + 10, 84 - 6);
    EXPECT_DOUBLE_EQ(geometry.Src(1).X, 14.5);
    EXPECT_DOUBLE_EQ(geometry.Src(1).Y, 18.5);
    EXPECT_EQ(geometry.Src(0).X, 10);
    EXPECT_EQ(geometry.HitHandle(4 * (60 + 1 + 5) + 5, 4 * (50 + 1 - 3), 5, -3, false), DstAnchorHandle);
    EXPECT_EQ(Geometry::Handle, DstAnchorHandle);
    geometry.Drag(4 * (60 + 1 + 5) + 5, 4 * (50 + 1 - 3) + 40);
    EXPECT_DOUBLE_EQ(geometry.Dst(1).X, 60);
    EXPECT_DOUBLE_EQ(geometry.Dst(1).Y, 60);
    // What was hit elsewhere is not there.
    Geometry other;
    other.Drag(1, 1);
    EXPECT_EQ(Status::Error().Code, NoError);
    EXPECT_EQ(other.HitHandle(44, 84), NoHandle);
}

} // namespace
