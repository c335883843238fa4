// Reads photographs of matrix codes, a folder a family and its number, beside ZXing and libdmtx, each told the same
// family: how many are read right, wrong and not at all, and the median time. A picture's text lies beside it.
#include "Bench.h"
#include "foundation/Status.h"
#include "image/Image.h"
#include "read/Code2DReader.h"

#define ZX_USE_UTF8 1 // texts in UTF-8
#include <ZXing/ReadBarcode.h>
#include <dmtx.h>
#include <iconv.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Texts = std::vector<std::string>;

struct Picture
{
    std::string name;
    Tesk::Image image;
    std::optional<std::string> text; ///< where one was written down
};

struct Family
{
    std::string name;
    ZXing::BarcodeFormats formats;
};

const Family families[] = {{"datamatrix", ZXing::BarcodeFormat::DataMatrix},
                           {"qrcode", ZXing::BarcodeFormat::QRCode},
                           {"falsepositives", ZXing::BarcodeFormat::DataMatrix | ZXing::BarcodeFormat::QRCode}};

/// Bytes of a character set in UTF-8; nothing if they are none of that set.
std::string Converted(const std::string& bytes, const char* set)
{
    const iconv_t converter = iconv_open("UTF-8", set);
    std::string text(4 * bytes.size() + 4, '\0');
    char *in = const_cast<char*>(bytes.data()), *out = text.data();
    std::size_t left = bytes.size(), room = text.size();
    const bool converted = iconv(converter, &in, &left, &out, &room) != static_cast<std::size_t>(-1);
    iconv_close(converter);
    return converted ? text.substr(0, text.size() - room) : std::string();
}

const char* SetOfECI(int value)
{
    return value == 26 ? "UTF-8" : value == 20 ? "SHIFT_JIS" : value == 7 ? "ISO-8859-5" : "ISO-8859-1";
}

/// In UTF-8, as the texts beside the pictures are: each stretch by the character set that a backslash and six digits
/// ahead of it tell.
std::string ByECI(const std::string& text)
{
    std::string result;
    const char* set = "ISO-8859-1";
    std::string stretch;
    for (std::size_t i = 0; i < text.size(); i++) {
        if (text[i] == '\\' && text.size() - i > 6 &&
            std::all_of(text.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                        text.begin() + static_cast<std::ptrdiff_t>(i) + 7,
                        [](char c) { return c >= '0' && c <= '9'; })) {
            result += Converted(stretch, set);
            stretch.clear();
            set = SetOfECI(std::stoi(text.substr(i + 1, 6)));
            i += 6;
        } else {
            stretch += text[i];
        }
    }
    return result + Converted(stretch, set);
}

Texts ReadOurs(const Family& family, const Tesk::Image& image, bool closer)
{
    Tesk::Code2DReader reader;
    reader.DetectDataMatrix = family.name != "qrcode";
    reader.DetectQR = family.name != "datamatrix";
    reader.EnabledPolarities = Tesk::AutoPolarity;
    reader.EnabledViews = Tesk::AutoView;
    reader.SizeTo = Tesk::Size16x48;
    reader.LookCloser = closer;
    Texts texts;
    if (!reader.Decode(image)) return texts;
    for (int i = 0; i < reader.NumDecoded; i++) {
        reader.Choose(i);
        const char* bytes = reader.AsciiString;
        texts.emplace_back(bytes, static_cast<std::size_t>(int(reader.StringLength)));
    }
    return texts;
}

Texts ReadTwice(const Family& family, const Tesk::Image& image)
{
    return ReadOurs(family, image, true);
}

Texts ReadOnce(const Family& family, const Tesk::Image& image)
{
    return ReadOurs(family, image, false);
}

Texts ReadZXing(const Family& family, const Tesk::Image& image)
{
    ZXing::DecodeHints hints;
    hints.setFormats(family.formats).setTryHarder(true).setTryRotate(true);
    const auto result =
        ZXing::ReadBarcode({image.FirstPixel, image.Width, image.Height, ZXing::ImageFormat::Lum, image.Pitch}, hints);
    return result.isValid() ? Texts{result.text()} : Texts{};
}

Texts ReadDmtx(const Family& family, const Tesk::Image& image)
{
    Texts texts;
    if (family.name == "qrcode") return texts;
    std::vector<unsigned char> packed;
    for (int y = 0; y < image.Height; y++)
        packed.insert(packed.end(), image.Row(y), image.Row(y) + image.Width);
    DmtxImage* view = dmtxImageCreate(packed.data(), image.Width, image.Height, DmtxPack8bppK);
    DmtxDecode* decode = dmtxDecodeCreate(view, 1);
    DmtxTime limit = dmtxTimeAdd(dmtxTimeNow(), 300);
    while (DmtxRegion* region = dmtxRegionFindNext(decode, &limit)) {
        DmtxMessage* message = dmtxDecodeMatrixRegion(decode, region, DmtxUndefined);
        if (message) {
            texts.emplace_back(reinterpret_cast<const char*>(message->output),
                               static_cast<std::size_t>(message->outputIdx));
            dmtxMessageDestroy(&message);
        }
        dmtxRegionDestroy(&region);
        if (!texts.empty()) break;
    }
    dmtxDecodeDestroy(&decode);
    dmtxImageDestroy(&view);
    return texts;
}

struct Contender
{
    const char* name;
    Texts (*read)(const Family&, const Tesk::Image&);
};
constexpr Contender contenders[] = {{"Tesk", ReadTwice}, {"first", ReadOnce}, {"ZXing", ReadZXing}, {"dmtx", ReadDmtx}};

struct Count
{
    int right = 0, wrong = 0, none = 0;
    std::vector<double> times;

    double Median()
    {
        if (times.empty()) return 0;
        std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2), times.end());
        return times[times.size() / 2];
    }
};

std::vector<Picture> Load(const fs::path& folder, const std::string& family)
{
    std::vector<fs::path> paths;
    for (const auto& directory : fs::directory_iterator(folder)) {
        if (!directory.is_directory() || !directory.path().filename().string().starts_with(family + "-")) continue;
        for (const auto& file : fs::directory_iterator(directory))
            if (file.path().extension() == ".png" || file.path().extension() == ".jpg") paths.push_back(file.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<Picture> pictures(paths.size());
    for (std::size_t i = 0; i < paths.size(); i++) {
        pictures[i].name = paths[i].parent_path().filename().string() + "/" + paths[i].filename().string();
        pictures[i].image.Read(paths[i].c_str(), Tesk::Gray);
        if (std::ifstream text(fs::path(paths[i]).replace_extension(".txt"), std::ios::binary); text) {
            pictures[i].text = std::string(std::istreambuf_iterator<char>(text), {});
        } else if (std::ifstream bytes(fs::path(paths[i]).replace_extension(".bin"), std::ios::binary); bytes) {
            const std::string content(std::istreambuf_iterator<char>(bytes), {});
            pictures[i].text = content;
        }
    }
    return pictures;
}

void Judge(const Picture& picture, const Texts& texts, Count& count, const char* who, bool tell)
{
    const auto isRight = [&](const std::string& text) {
        // Without an ECI, readers differ in what bytes stand for.
        return picture.text &&
               (text == *picture.text || ByECI(text) == *picture.text || Converted(text, "SHIFT_JIS") == *picture.text);
    };
    const char* verdict = "none";
    if (texts.empty()) {
        count.none++;
    } else if (std::all_of(texts.begin(), texts.end(), isRight)) {
        count.right++;
        verdict = "right";
    } else {
        count.wrong++;
        verdict = "WRONG";
    }
    if (!tell) return;
    std::printf("  %-40s %-6s %-6s", picture.name.c_str(), who, verdict);
    for (const std::string& text : texts)
        std::printf(" [%s]", text.c_str());
    std::printf("\n");
}

void Row(const Family& family, const std::vector<Picture>& pictures, const char* only)
{
    Count counts[std::size(contenders)];
    for (const Picture& picture : pictures) {
        if (only && picture.name.find(only) == std::string::npos) continue;
        for (std::size_t k = 0; k < std::size(contenders); k++) {
            Texts texts;
            double shortest = 1e30;
            for (int round = 0; round < 3; round++) {
                const auto begin = Clock::now();
                texts = contenders[k].read(family, picture.image);
                shortest = std::min(shortest, std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
            }
            counts[k].times.push_back(shortest);
            Judge(picture, texts, counts[k], contenders[k].name, only != nullptr);
        }
    }
    std::printf("%-15s %3zu", family.name.c_str(), pictures.size());
    for (std::size_t k = 0; k < std::size(contenders); k++)
        std::printf("  %-5s %3d right %2d wrong %2d none %6.2f ms", contenders[k].name, counts[k].right,
                    counts[k].wrong, counts[k].none, counts[k].Median());
    std::printf("\n");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::printf("code2d-bench FOLDER [FAMILY [NAME]]\n");
        return 2;
    }
    bench::Start(1, argv);
    Tesk::Status::ErrorBehavior(Tesk::IgnoreIt);
    for (const Family& family : families)
        if (argc < 3 || std::string(argv[2]) == "all" || family.name == argv[2])
            Row(family, Load(argv[1], family.name), argc > 3 ? argv[3] : nullptr);
    return 0;
}
