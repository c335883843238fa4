#include "image/Image.h"
#include "image/Operator.h"
#include "tests/measure/path/PathShapes.h"

#include <algorithm>
#include <random>
#include <set>

using namespace Tesk;

namespace {

using Sites = std::vector<std::pair<int, int>>;

class PathFollow : public PathMethods
{
protected:
    /// An image from rows of digits and blanks: '#' is 200, others 10.
    static void Draw(Image& image, const std::vector<std::string>& rows)
    {
        image.Set(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), Gray);
        for (std::size_t y = 0; y < rows.size(); y++)
            for (std::size_t x = 0; x < rows[y].size(); x++)
                image.Row(static_cast<int>(y))[x] = rows[y][x] == '#' ? 200 : 10;
    }

    static Path Followed(const Image& image, int x, int y, bool connexity8 = true, bool closed = true,
                         int threshold = 100, bool above = true)
    {
        Path path;
        // As exported programs call it.
        path.Follow(Site(x, y), threshold, image, above, connexity8, closed);
        EXPECT_EQ(Status::Error().Code, NoError);
        return path;
    }
};

TEST_F(PathFollow, RunsClockwiseRoundABlobFromTheSeed)
{
    Image image;
    Draw(image, {"......", ".###..", ".####.", "......"});
    const Path path = Followed(image, 1, 1);
    EXPECT_EQ(SitesOf(path), (Sites{{1, 1}, {2, 1}, {3, 1}, {4, 2}, {3, 2}, {2, 2}, {1, 2}}));
    EXPECT_TRUE(path.Closed);
    EXPECT_GT(path.Area(), 0);
    EXPECT_EQ(SitesOf(Followed(image, 1, 1, false)),
              (Sites{{1, 1}, {2, 1}, {3, 1}, {3, 2}, {4, 2}, {3, 2}, {2, 2}, {1, 2}}));
}

TEST_F(PathFollow, IsEmptyInTheInteriorAndOutsideAndASiteOnASinglePixel)
{
    Image image;
    Draw(image, {".....", ".###.", ".####", ".###.", "....."});
    EXPECT_EQ(Followed(image, 2, 2).Length, 0) << "an interior pixel";
    EXPECT_EQ(Followed(image, 0, 0).Length, 0) << "a pixel outside the blob";
    EXPECT_EQ(Followed(image, 5, 0).Length, 0) << "a seed outside the image";
    EXPECT_EQ(Followed(image, -1, 2).Length, 0);
    // Its one neighbour outside the blob is at a corner.
    Draw(image, {"####", "####", "###."});
    EXPECT_EQ(Followed(image, 2, 1, false).Length, 0);
    EXPECT_GT(Followed(image, 2, 1, true).Length, 0);
    Draw(image, {"...", ".#.", "..."});
    for (const bool closed : {true, false}) {
        const Path path = Followed(image, 1, 1, true, closed);
        EXPECT_EQ(SitesOf(path), (Sites{{1, 1}}));
        EXPECT_TRUE(path.Closed);
    }
}

TEST_F(PathFollow, TakesTheThresholdFromTheSeedSoThatItIsInside)
{
    Image image;
    image.Set(5, 1, Gray);
    const int values[] = {49, 50, 51, 50, 255};
    for (int x = 0; x < 5; x++)
        image.Row(0)[x] = static_cast<std::uint8_t>(values[x]);
    const auto reached = [&](int x, bool above) {
        std::set<int> columns;
        for (const auto& [column, row] : SitesOf(Followed(image, x, 0, true, true, Auto, above)))
            columns.insert(column);
        return columns;
    };
    EXPECT_EQ(reached(1, true), (std::set<int>{1, 2, 3, 4})) << "at or above 50";
    EXPECT_EQ(reached(1, false), (std::set<int>{0, 1})) << "below 51";
    EXPECT_EQ(reached(4, true), (std::set<int>{4}));
    EXPECT_EQ(reached(4, false).count(3), 1u) << "below 256 is everything";
    EXPECT_EQ(Followed(image, 1, 0, true, true, 50, false).Length, 0) << "50 is not below 50";
}

TEST_F(PathFollow, SitesAreInTheWindowAndTheOriginIsItsCorner)
{
    Image image;
    Draw(image, {"......", ".####.", ".####.", "......"});
    image.Window(2, 1, 3, 3);
    const Path path = Followed(image, 2, 1);
    EXPECT_EQ(path.OrgX, 2);
    EXPECT_EQ(path.OrgY, 1);
    // The pixel left of the window is no neighbour.
    EXPECT_EQ(SitesOf(path), (Sites{{0, 0}, {1, 0}, {2, 0}, {2, 1}, {1, 1}, {0, 1}}));
    EXPECT_EQ(Followed(image, 1, 1).Length, 0) << "outside the window";
}

TEST_F(PathFollow, AnOpenContourRunsFromBorderToBorderWhereverItIsSeeded)
{
    Image image;
    Draw(image, {".......", ".......", "#######", "#######", "#######", "......."});
    Sites top, bottom;
    for (int x = 0; x < 7; x++) {
        top.emplace_back(x, 2);
        bottom.emplace_back(6 - x, 4);
    }
    for (const bool connexity8 : {true, false})
        for (int x = 0; x < 7; x++) {
            const Path upper = Followed(image, x, 2, connexity8, false),
                       lower = Followed(image, x, 4, connexity8, false);
            EXPECT_EQ(SitesOf(upper), top) << x;
            EXPECT_EQ(SitesOf(lower), bottom) << x;
            EXPECT_FALSE(upper.Closed);
        }
    // Closed, it also runs along the border.
    const Path closed = Followed(image, 3, 2, true, true);
    EXPECT_TRUE(closed.Closed);
    EXPECT_EQ(closed.Length, 2 * 7 + 2);
    // A blob that touches no border is closed all the same.
    Draw(image, {".....", ".###.", "....."});
    EXPECT_TRUE(Followed(image, 1, 1, true, false).Closed);
    Draw(image, {"#####", "#####"});
    const Path alone = Followed(image, 2, 0, true, false);
    EXPECT_EQ(SitesOf(alone), (Sites{{2, 0}})) << "all round it is border";
    EXPECT_FALSE(alone.Closed);
}

/// A pixel of a contour, and whether it is there for a side on the border of the image.
struct Crack
{
    std::pair<int, int> pixel;
    bool isBorder;
};

/// The cycle of the cracks between the blob and what is not, clockwise from the right side of a pixel.
std::vector<Crack> Cracks(const Image& image, int x, int y, bool connexity8)
{
    const auto inImage = [&](int px, int py) { return px >= 0 && py >= 0 && px < image.Width && py < image.Height; };
    const auto inside = [&](int px, int py) { return inImage(px, py) && image.Row(py)[px] >= 100; };
    std::vector<Crack> cracks;
    // The outer side of the crack is by (dx, dy), and the crack runs by (ax, ay).
    int px = x, py = y, dx = 1, dy = 0;
    do {
        cracks.push_back({{px, py}, !inImage(px + dx, py + dy)});
        const int ax = -dy, ay = dx;
        const bool diagonal = inside(px + ax + dx, py + ay + dy), ahead = inside(px + ax, py + ay);
        if (diagonal && (ahead || connexity8)) {
            if (ahead && !connexity8) cracks.push_back({{px + ax, py + ay}, false});
            px += ax + dx;
            py += ay + dy;
            dx = -ax;
            dy = -ay;
        } else if (ahead) {
            px += ax;
            py += ay;
        } else {
            dx = ax;
            dy = ay;
        }
    } while (px != x || py != y || dx != 1 || dy != 0);
    return cracks;
}

/// The pixels behind the seed, until it comes again or, for an `open` contour, until the border.
template <typename Iterator>
void Pixels(Iterator from, Iterator to, std::pair<int, int> seed, bool open, Sites& sites)
{
    std::pair<int, int> last = seed;
    for (; from != to && !(open && from->isBorder); ++from) {
        if (from->pixel == last) continue;
        last = from->pixel;
        if (last == seed && !open) return;
        sites.push_back(last);
    }
}

TEST_F(PathFollow, AgreesWithTheCracksBetweenPixelsOnRandomBlobs)
{
    std::mt19937 random(5);
    int closedOnes = 0, openOnes = 0;
    for (int round = 0; round < 200; round++) {
        Image image;
        image.Set(9, 8, Gray);
        std::bernoulli_distribution filled(round % 3 == 0 ? 0.4 : 0.75);
        for (int y = 0; y < 8; y++)
            for (int x = 0; x < 9; x++)
                image.Row(y)[x] = filled(random) ? 200 : 10;
        for (int k = 0; k < 4 * 72; k++) {
            const bool connexity8 = k & 1, open = k & 2;
            const int x = k / 4 % 9, y = k / 36;
            // The right neighbour is tried first; the contour starts on its side.
            if (x == 8 || image.Row(y)[x] < 100 || image.Row(y)[x + 1] >= 100) continue;
            const std::pair seed(x, y);
            const std::vector<Crack> cracks = Cracks(image, x, y, connexity8);
            Sites expected = {seed};
            const bool border =
                open && std::any_of(cracks.begin(), cracks.end(), [](const Crack& crack) { return crack.isBorder; });
            Pixels(cracks.begin(), cracks.end(), seed, border, expected);
            if (border) {
                Sites before;
                Pixels(cracks.rbegin(), cracks.rend(), seed, true, before);
                expected.insert(expected.begin(), before.rbegin(), before.rend());
            }
            const Path path = Followed(image, x, y, connexity8, !open);
            ASSERT_EQ(SitesOf(path), expected) << round << ' ' << x << ' ' << y << ' ' << connexity8 << ' ' << open;
            ASSERT_EQ(path.Closed, !border);
            (border ? openOnes : closedOnes)++;
        }
    }
    EXPECT_GT(closedOnes, 1000);
    EXPECT_GT(openOnes, 1000);
}

TEST_F(PathFollow, RefusesWhatIsNotGrayAndKeepsThePath)
{
    Image image;
    Path path = PathOf({{1, 2}});
    Site seed(0, 0);
    path.Follow(seed, 10, image);
    ExpectRefusal(VoidObject, L"Void source or destination image", "Tesk::Path::Follow");
    image.Set(3, 3, Rgb);
    path.Follow(seed, 10, image);
    EXPECT_EQ(Status::Error().Code, IncompatibleType);
    EXPECT_EQ(SitesOf(path), (Sites{{1, 2}}));
    image.Set(32769, 2, Gray);
    path.Follow(seed, 10, image);
    ExpectRefusal(OutOfRange, L"The image size (32769, 2) is larger than the coordinates of a path reach (32767)",
                  "Tesk::Path::Follow");
    EXPECT_EQ(SitesOf(path), (Sites{{1, 2}}));
}

TEST_F(PathFollow, AnOpenContourGoesThroughASeedOnALineOfOnePixel)
{
    Image image;
    image.Set(30, 10, Gray);
    for (int y = 0; y < 10; y++)
        for (int x = 0; x < 30; x++)
            image.Row(y)[x] = y == 5 && x <= 20 ? 200 : 10;
    for (const bool connexity8 : {true, false}) {
        const Path path = Followed(image, 10, 5, connexity8, false);
        // Along the line and back.
        EXPECT_FALSE(path.Closed);
        ASSERT_EQ(path.Length, 41);
        EXPECT_EQ(path.Vertex(0).X, 0);
        EXPECT_EQ(path.Vertex(20).X, 20);
        EXPECT_EQ(path.Vertex(40).X, 0);
    }
    // Without the border a thin blob is followed as a closed walk does it.
    image.Row(5)[0] = 10;
    EXPECT_EQ(SitesOf(Followed(image, 10, 5, true, false)), SitesOf(Followed(image, 10, 5, true, true)));
}

TEST_F(PathFollow, OpenContoursRunFromBorderToBorder)
{
    std::mt19937 random(4);
    int opened = 0;
    for (int round = 0; round < 400; round++) {
        Image image;
        image.Set(12, 9, Gray);
        for (int y = 0; y < 9; y++)
            for (int x = 0; x < 12; x++)
                image.Row(y)[x] = random() % 5 < 3 ? 200 : 10;
        const Path path = Followed(image, 1 + round % 10, 1 + round % 7, round % 2 == 0, false);
        if (path.Closed || path.Length < 1) continue;
        opened++;
        for (const int end : {0, path.Length - 1}) {
            const Site site = path.Vertex(end);
            EXPECT_TRUE(site.X == 0 || site.Y == 0 || site.X == 11 || site.Y == 8) << round;
        }
    }
    EXPECT_GT(opened, 50);
}

} // namespace
