// Reads photographs of matrix codes, a folder a family and its number, beside ZXing and libdmtx, each told the same
// family: how many are read right, wrong and not at all, and the median time. A picture's text lies beside it.
#include "Photographs.h"
#include "read/Code2DReader.h"

#define ZX_USE_UTF8 1 // texts in UTF-8
#include <ZXing/ReadBarcode.h>
#include <dmtx.h>
#include <iconv.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace {

using bench::Texts;

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

constexpr bench::Contender<Family> contenders[] = {
    {"Tesk", ReadTwice}, {"first", ReadOnce}, {"ZXing", ReadZXing}, {"dmtx", ReadDmtx}};

bench::Verdict Judge(const bench::Photograph& picture, const Texts& texts)
{
    const auto isRight = [&](const std::string& text) {
        // Without an ECI, readers differ in what bytes stand for.
        return picture.text &&
               (text == *picture.text || ByECI(text) == *picture.text || Converted(text, "SHIFT_JIS") == *picture.text);
    };
    return std::all_of(texts.begin(), texts.end(), isRight) ? bench::Verdict::Right : bench::Verdict::Wrong;
}

} // namespace

int main(int argc, char** argv)
{
    return bench::ForFamilies(argc, argv, "code2d-bench", families, [&](const Family& family, const char* only) {
        bench::PrintReads<Family>(family, bench::LoadPhotographs(argv[1], family.name), contenders, only, Judge);
    });
}
