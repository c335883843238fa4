// Lines of text in several typefaces, trained on ten samples of each character and read under noise, blur, slant and at
// low resolution: what is read rightly, wrongly and not at all, beside Tesseract on the same pictures. Both are told
// that there are digits and capitals alone, in a single line.
#define TESK_NO_USING_NAMESPACE
#include "Tesk.h"

#include <cairo.h>
#include <tesseract/baseapi.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using Tesk::Image;

// Without I and O, which many typefaces draw as 1 and 0.
const std::string alphabet = "0123456789ABCDEFGHJKLMNPQRSTUVWXYZ";
constexpr int trainedSamples = 10, linesEach = 20, lineLength = 12;
constexpr int paper = 225, ink = 40;
constexpr double trainedSize = 40, smallSize = 16;

struct Typeface
{
    const char* family;
    cairo_font_weight_t weight;
};
constexpr Typeface typefaces[] = {
    {"DejaVu Sans", CAIRO_FONT_WEIGHT_NORMAL},  {"DejaVu Sans Mono", CAIRO_FONT_WEIGHT_BOLD},
    {"DejaVu Serif", CAIRO_FONT_WEIGHT_NORMAL}, {"Nimbus Sans", CAIRO_FONT_WEIGHT_NORMAL},
    {"Nimbus Roman", CAIRO_FONT_WEIGHT_NORMAL}, {"Nimbus Mono PS", CAIRO_FONT_WEIGHT_BOLD}};

/// What happens to a line.
struct Condition
{
    const char* name;
    double noise = 0; ///< standard deviation, in gray values
    double blur = 0;  ///< standard deviation of the Gaussian, in pixels
    double slant = 0; ///< tangent
    double size = trainedSize;
};
constexpr Condition conditions[] = {{"clean"},
                                    {"noise 20", 20},
                                    {"noise 40", 40},
                                    {"blur 2", 5, 2},
                                    {"blur 3", 5, 3},
                                    {"slant 5 degrees", 5, 0, 0.087},
                                    {"slant 10 degrees", 5, 0, 0.176},
                                    {"16 pixels", 5, 0, 0, smallSize},
                                    {"16 pixels, blur 1", 5, 1, 0, smallSize}};

using Pixels = std::vector<double>;

/// One line after another of a Gaussian, sampled to three deviations.
void Blur(Pixels& pixels, int width, int height, double sigma)
{
    const int radius = static_cast<int>(std::ceil(3 * sigma));
    const auto pass = [&](int count, int lines, int step, int lineStep) {
        Pixels line(static_cast<std::size_t>(count));
        for (int l = 0; l < lines; l++) {
            const auto at = [&](int i) -> double& {
                return pixels[static_cast<std::size_t>(l * lineStep + std::clamp(i, 0, count - 1) * step)];
            };
            for (int i = 0; i < count; i++) {
                double sum = 0, weights = 0;
                for (int k = -radius; k <= radius; k++) {
                    const double weight = std::exp(-k * k / (2 * sigma * sigma));
                    sum += weight * at(i + k);
                    weights += weight;
                }
                line[static_cast<std::size_t>(i)] = sum / weights;
            }
            for (int i = 0; i < count; i++)
                at(i) = line[static_cast<std::size_t>(i)];
        }
    };
    pass(width, height, 1, width);
    pass(height, width, width, 1);
}

/// Draws a text, dark on light, at a random fraction of a pixel.
void Render(const std::string& text, const Typeface& face, const Condition& condition, std::mt19937& random,
            Image& image)
{
    const int margin = static_cast<int>(condition.size), height = 3 * margin;
    const int width = 2 * margin + static_cast<int>(condition.size * static_cast<double>(text.size()));
    std::uniform_real_distribution<double> fraction(0, 1);
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    cairo_t* context = cairo_create(surface);
    cairo_set_source_rgb(context, 1, 1, 1);
    cairo_paint(context);
    cairo_set_source_rgb(context, 0, 0, 0);
    cairo_select_font_face(context, face.family, CAIRO_FONT_SLANT_NORMAL, face.weight);
    cairo_set_font_size(context, condition.size);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_set_font_options(context, options);
    cairo_font_options_destroy(options);
    cairo_matrix_t shear;
    cairo_matrix_init(&shear, 1, 0, -condition.slant, 1, margin + fraction(random), 2 * margin + fraction(random));
    cairo_set_matrix(context, &shear);
    double x = 0;
    for (const char c : text) {
        const char one[] = {c, 0};
        cairo_text_extents_t extents;
        cairo_text_extents(context, one, &extents);
        cairo_move_to(context, x, 0);
        cairo_show_text(context, one);
        x += extents.x_advance + condition.size / 15;
    }
    cairo_surface_flush(surface);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    Pixels pixels;
    for (int y = 0; y < height; y++)
        for (int column = 0; column < width; column++)
            pixels.push_back(ink + (paper - ink) * data[y * stride + 4 * column] / 255.0);
    cairo_destroy(context);
    cairo_surface_destroy(surface);

    if (condition.blur > 0) Blur(pixels, width, height, condition.blur);
    std::normal_distribution<double> noise(0, std::max(condition.noise, 1e-9));
    image.Set(width, height, Tesk::Gray);
    for (int y = 0; y < height; y++)
        for (int column = 0; column < width; column++)
            image.PixelGray(column, y) = static_cast<std::uint8_t>(
                std::clamp(pixels[static_cast<std::size_t>(y * width + column)] + noise(random), 0.0, 255.0));
}

struct Count
{
    int right = 0, wrong = 0, rejected = 0;
    double time = 0;
};

/// Aligns what was read with what stands there by the fewest edits: characters that are missing, or "?", are rejected;
/// others, and those that are too many, are wrong.
void Judge(const std::string& truth, const std::string& read, Count& count)
{
    const std::size_t n = truth.size(), m = read.size();
    std::vector<std::vector<int>> cost(n + 1, std::vector<int>(m + 1));
    for (std::size_t i = 0; i <= n; i++)
        for (std::size_t j = 0; j <= m; j++) {
            if (i == 0 || j == 0) {
                cost[i][j] = static_cast<int>(i + j);
                continue;
            }
            cost[i][j] = std::min(
                {cost[i - 1][j - 1] + (truth[i - 1] == read[j - 1] ? 0 : 1), cost[i - 1][j] + 1, cost[i][j - 1] + 1});
        }
    for (std::size_t i = n, j = m; i > 0 || j > 0;) {
        if (i > 0 && j > 0 && cost[i][j] == cost[i - 1][j - 1] + (truth[i - 1] == read[j - 1] ? 0 : 1)) {
            i--;
            j--;
            (truth[i] == read[j] ? count.right : read[j] == '?' ? count.rejected : count.wrong)++;
        } else if (i > 0 && cost[i][j] == cost[i - 1][j] + 1) {
            i--;
            count.rejected++;
        } else {
            j--;
            count.wrong++;
        }
    }
}

template <typename F>
void Read(const std::string& truth, Count& count, F read)
{
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    std::string text = read();
    count.time += std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
    Judge(truth, text, count);
}

struct Size
{
    int width, height;
};

/// Says how large characters are, by what was guessed once for those of the training.
void SetSize(const Size& trained, double size, Tesk::CharReader& reader)
{
    reader.GuessSize = false;
    reader.CharWidth = static_cast<int>(std::lround(trained.width * size / trainedSize));
    reader.CharHeight = static_cast<int>(std::lround(trained.height * size / trainedSize));
}

/// The size of the characters of a clean line.
Size GuessSize(const Typeface& face, std::mt19937& random)
{
    Tesk::CharReader reader;
    Image image;
    Render(alphabet, face, {"clean"}, random, image);
    reader.CharsSegment(image);
    return {reader.CharWidth, reader.CharHeight};
}

/// False where a line of the training did not fall into its characters.
bool Train(const Typeface& face, const Size& size, std::mt19937& random, Tesk::CharReader& reader)
{
    constexpr Condition training = {"training", 8};
    SetSize(size, training.size, reader);
    for (int i = 0; i < trainedSamples; i++)
        for (std::size_t first = 0; first < alphabet.size(); first += lineLength) {
            const std::string text = alphabet.substr(first, lineLength);
            Image image;
            Render(text, face, training, random, image);
            reader.CharsSegment(image);
            reader.FontStringInsert(image, text.c_str());
            if (Tesk::Status::Error().Code != Tesk::NoError) return false;
        }
    return true;
}

std::string RandomText(std::mt19937& random)
{
    std::string text;
    for (int i = 0; i < lineLength; i++)
        text += alphabet[random() % alphabet.size()];
    return text;
}

void Print(const char* name, const Count& ours, const Count& theirs)
{
    const auto percent = [](int part, const Count& of) {
        return 100.0 * part / std::max(1, of.right + of.wrong + of.rejected);
    };
    const int lines = linesEach * static_cast<int>(std::size(typefaces));
    std::printf("%-18s | %5.1f %5.1f %5.1f  %7.2f | %5.1f %5.1f %5.1f  %7.2f\n", name, percent(ours.right, ours),
                percent(ours.wrong, ours), percent(ours.rejected, ours), ours.time / lines,
                percent(theirs.right, theirs), percent(theirs.wrong, theirs), percent(theirs.rejected, theirs),
                theirs.time / lines);
}

} // namespace

int main()
{
    Tesk::Status::ErrorBehavior(Tesk::IgnoreIt);
    tesseract::TessBaseAPI peer;
    if (peer.Init(nullptr, "eng", tesseract::OEM_LSTM_ONLY) != 0) return 1;
    peer.SetVariable("tessedit_char_whitelist", alphabet.c_str());
    peer.SetPageSegMode(tesseract::PSM_SINGLE_LINE);

    std::mt19937 random(7);
    std::vector<Tesk::CharReader> readers(std::size(typefaces));
    std::vector<Size> sizes;
    for (const Typeface& face : typefaces)
        sizes.push_back(GuessSize(face, random));
    for (std::size_t i = 0; i < readers.size(); i++)
        if (!Train(typefaces[i], sizes[i], random, readers[i])) {
            std::printf("%s: the training was refused: %ls\n", typefaces[i].family, Tesk::Status::UnicodeError());
            return 1;
        }
    std::printf("%-18s | ours: right, wrong, rejected %%, ms  | Tesseract\n", "");
    for (const Condition& condition : conditions) {
        Count ours, theirs;
        for (std::size_t i = 0; i < readers.size(); i++) {
            Tesk::CharReader& reader = readers[i];
            SetSize(sizes[i], condition.size, reader);
            reader.DiscardBadScores = true;
            reader.MinimumScore = 0.6;
            for (int line = 0; line < linesEach; line++) {
                const std::string text = RandomText(random);
                Image image;
                Render(text, typefaces[i], condition, random, image);
                Read(text, ours, [&] {
                    reader.CharsRead(image);
                    return std::string(reader.AsciiString);
                });
                Read(text, theirs, [&] {
                    peer.SetImage(image.FirstPixel, image.Width, image.Height, 1, image.Pitch);
                    const std::unique_ptr<char[]> read(peer.GetUTF8Text());
                    return std::string(read ? read.get() : "");
                });
            }
        }
        Print(condition.name, ours, theirs);
    }
    return 0;
}
