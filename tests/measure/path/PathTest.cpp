#include "measure/Path.h"
#include "foundation/Graph.h"
#include "foundation/RecordingTarget.h"
#include "foundation/Status.h"

#include <gtest/gtest.h>

using namespace Tesk;

namespace {

class PathDrawing : public ::testing::Test
{
protected:
    PathDrawing() { Graph::DrawTo(&target_); }
    ~PathDrawing() override { Graph::DrawTo(nullptr); }

    /// The strokes of a drawing, without the pen.
    std::vector<std::string> Drawn(const Path& path, bool vertices, bool edges)
    {
        target_.Calls.clear();
        path.Draw(vertices, edges);
        std::vector<std::string> calls;
        for (const std::string& call : target_.Calls)
            if (call.starts_with("Move") || call.starts_with("Line")) calls.push_back(call);
        return calls;
    }

    RecordingTarget target_;
    GraphSettings kept_;
};

TEST_F(PathDrawing, StrokesRunBetweenTheSitesFromTheOriginOfThePicture)
{
    Graph::Zoom = 2;
    Path path;
    EXPECT_TRUE(Drawn(path, true, true).empty());
    path.Append(0, 0);
    path.Append(10, 0);
    path.Append(10, 5);
    path.OrgX = 3;
    path.OrgY = 4;
    const std::vector<std::string> open = Drawn(path, false, true);
    ASSERT_FALSE(open.empty());
    // trunc((v + 0.5) * 2) of 3, 4 and 13, 9.
    EXPECT_EQ(open.front().substr(open.front().find(' ')), " 7 9");
    EXPECT_EQ(open.back().substr(open.back().find(' ')), " 27 19");
    path.Closed = true;
    const std::vector<std::string> closed = Drawn(path, false, true);
    EXPECT_EQ(closed.size(), open.size() + 1) << "one more stroke, between the ends";
    // Two strokes a mark.
    EXPECT_EQ(Drawn(path, true, false).size(), 3u * 4);
    Path single;
    single.Append(1, 1);
    EXPECT_FALSE(Drawn(single, false, true).empty()) << "a single site is not lost";
}

} // namespace

TEST(PathCopy, LeavesTheThreadsCodeAlone)
{
    Status::ErrorBehavior(IgnoreIt);
    Path path;
    path.Append(1, 2);
    path.Vertex(7);
    ASSERT_EQ(Status::Error().Code, OutOfRange);
    const Path copy = path;
    EXPECT_EQ(Status::Error().Code, OutOfRange);
    EXPECT_NE(copy.Sites(), path.Sites());
    EXPECT_EQ(copy.Sites()[0].Y, 2);
}
