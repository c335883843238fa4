// How many photographs of linear codes are read right, wrong and not at all, and in what time, beside ZXing-C++ and
// ZBar on the same pictures. The argument is a folder of folders FAMILY-N with pictures NAME.png or NAME.jpg, and the
// text of each in NAME.txt; those of families without linear codes must give nothing. "first" is the reader without
// its closer look.
//
//     code1d-bench FOLDER [FAMILY [NAME]]    NAME: tells what each picture gives
#include "Photographs.h"

#include "read/Code1DReader.h"

// Before the other one, whose macros have names of its classes.
#include <zbar.h>

#define ZX_USE_UTF8 1
#include <ZXing/ReadBarcode.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <string>
#include <vector>

namespace {

using bench::Texts;

/// What a family is made of, for each reader.
struct Family
{
    std::string name;
    std::function<void(Tesk::Code1DReader&)> enable;
    ZXing::BarcodeFormats formats;
    std::vector<zbar::zbar_symbol_type_t> types;
};

void EnableRetail(Tesk::Code1DReader& reader)
{
    reader.DetectEAN13 = reader.DetectEAN8 = reader.DetectUPCA = reader.DetectUPCE = true;
}

void EnableAll(Tesk::Code1DReader& reader)
{
    EnableRetail(reader);
    reader.DetectEAN128 = reader.Detect2of5 = reader.Detect39 = reader.Detect39Extended = true;
    reader.Detect93 = reader.DetectCodabar = reader.DetectDatabar = reader.DetectDatabarLimited = true;
}

const std::vector<Family>& Families()
{
    using enum ZXing::BarcodeFormat;
    using Reader = Tesk::Code1DReader;
    const std::vector<zbar::zbar_symbol_type_t> retail = {zbar::ZBAR_EAN13, zbar::ZBAR_EAN8, zbar::ZBAR_UPCA,
                                                          zbar::ZBAR_UPCE};
    const ZXing::BarcodeFormats retailFormats = EAN13 | EAN8 | UPCA | UPCE;
    static const std::vector<Family> families = {
        {"codabar", [](Reader& r) { r.DetectCodabar = true; }, Codabar, {zbar::ZBAR_CODABAR}},
        {"code128", [](Reader& r) { r.DetectEAN128 = true; }, Code128, {zbar::ZBAR_CODE128}},
        {"code39", [](Reader& r) { r.Detect39 = r.Detect39Extended = true; }, Code39, {zbar::ZBAR_CODE39}},
        {"code93", [](Reader& r) { r.Detect93 = true; }, Code93, {zbar::ZBAR_CODE93}},
        {"databarltd", [](Reader& r) { r.DetectDatabarLimited = true; }, DataBar, {zbar::ZBAR_DATABAR}},
        {"rss14", [](Reader& r) { r.DetectDatabar = true; }, DataBar, {zbar::ZBAR_DATABAR}},
        {"itf", [](Reader& r) { r.Detect2of5 = true; }, ITF, {zbar::ZBAR_I25}},
        {"ean13", EnableRetail, retailFormats, retail},
        {"ean8", EnableRetail, retailFormats, retail},
        {"upca", EnableRetail, retailFormats, retail},
        {"upce", EnableRetail, retailFormats, retail},
        {"multi", EnableAll, LinearCodes, {}},
        {"falsepositives", EnableAll, LinearCodes, {}},
        {"datamatrix", EnableAll, LinearCodes, {}},
        {"qrcode", EnableAll, LinearCodes, {}}};
    return families;
}

/// The digits of UPC-A that those of UPC-E stand for.
std::string Expanded(const std::string& upce)
{
    const std::string d = upce.substr(1, 6);
    std::string body;
    switch (d[5]) {
    case '0':
    case '1':
    case '2':
        body = d.substr(0, 2) + d[5] + "0000" + d.substr(2, 3);
        break;
    case '3':
        body = d.substr(0, 3) + "00000" + d.substr(3, 2);
        break;
    case '4':
        body = d.substr(0, 4) + "00000" + d[4];
        break;
    default:
        body = d.substr(0, 5) + "0000" + d[5];
    }
    return upce[0] + body + upce[7];
}

/// A text without what readers may add or leave out.
std::string Plain(const std::string& family, std::string text)
{
    if (text.starts_with("]C1")) text.erase(0, 3);
    std::erase_if(text, [](unsigned char c) { return c < 32; });
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    while (!text.empty() && text.front() == ' ')
        text.erase(0, 1);
    if (family == "codabar" && text.size() > 2 && std::isalpha(static_cast<unsigned char>(text.front())))
        text = text.substr(1, text.size() - 2);
    if (family == "rss14" || family == "databarltd") {
        std::erase_if(text, [](char c) { return c == '(' || c == ')'; });
        if (text.size() == 16 && text.starts_with("01")) text.erase(0, 2);
    }
    if (family == "upce" && text.size() == 8) text = Expanded(text);
    if (family.starts_with("upc") || family == "ean13")
        while (!text.empty() && text.front() == '0')
            text.erase(0, 1);
    return text;
}

Texts ReadOurs(const Family& family, const Tesk::Image& image, bool lookCloser)
{
    static Tesk::Code1DReader reader;
    reader.DetectEAN128 = reader.DetectEAN13 = reader.DetectEAN8 = reader.DetectUPCA = reader.DetectUPCE = false;
    reader.Detect2of5 = reader.Detect39 = reader.Detect39Extended = reader.Detect93 = reader.DetectCodabar = false;
    reader.DetectDatabar = reader.DetectDatabarLimited = false;
    family.enable(reader);
    reader.LookCloser = lookCloser;
    Texts texts;
    if (!reader.Decode(image)) return texts;
    for (int i = 0; i < reader.NumDecoded; i++) {
        reader.Choose(i);
        texts.emplace_back(static_cast<const char*>(reader.AsciiString));
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
    if (family.name == "code39") hints.setTryCode39ExtendedMode(true);
    // One symbol: the search for more fails an assertion of version 1.4 on some of the pictures.
    const auto result =
        ZXing::ReadBarcode({image.FirstPixel, image.Width, image.Height, ZXing::ImageFormat::Lum, image.Pitch}, hints);
    return result.isValid() ? Texts{result.text()} : Texts{};
}

Texts ReadZBar(const Family& family, const Tesk::Image& image)
{
    zbar::ImageScanner scanner;
    if (!family.types.empty()) {
        scanner.set_config(zbar::ZBAR_NONE, zbar::ZBAR_CFG_ENABLE, 0);
        for (const auto type : family.types)
            scanner.set_config(type, zbar::ZBAR_CFG_ENABLE, 1);
    } else {
        scanner.set_config(zbar::ZBAR_QRCODE, zbar::ZBAR_CFG_ENABLE, 0);
    }
    std::vector<std::uint8_t> packed;
    for (int y = 0; y < image.Height; y++)
        packed.insert(packed.end(), image.Row(y), image.Row(y) + image.Width);
    zbar::Image view(static_cast<unsigned>(int(image.Width)), static_cast<unsigned>(int(image.Height)), "Y800",
                     packed.data(), packed.size());
    scanner.scan(view);
    Texts texts;
    for (auto symbol = view.symbol_begin(); symbol != view.symbol_end(); ++symbol)
        texts.push_back(symbol->get_data());
    return texts;
}

constexpr bench::Contender<Family> contenders[] = {
    {"Tesk", ReadTwice}, {"first", ReadOnce}, {"ZXing", ReadZXing}, {"ZBar", ReadZBar}};

/// What is read of several codes in a picture, whose texts are not known, counts as right; in families without linear
/// codes it is wrong.
bench::Verdict Judge(const Family& family, const bench::Photograph& picture, const Texts& texts)
{
    if (family.name == "multi") return bench::Verdict::Right;
    if (!picture.text || family.name == "qrcode" || family.name == "datamatrix") return bench::Verdict::Wrong;
    const std::string expected = Plain(family.name, *picture.text);
    const bool all = std::all_of(texts.begin(), texts.end(),
                                 [&](const std::string& text) { return Plain(family.name, text) == expected; });
    return all ? bench::Verdict::Right : bench::Verdict::Wrong;
}

} // namespace

int main(int argc, char** argv)
{
    return bench::ForFamilies(argc, argv, "code1d-bench", Families(), [&](const Family& family, const char* only) {
        bench::PrintReads<Family>(
            family, bench::LoadPhotographs(argv[1], family.name), contenders, only,
            [&](const bench::Photograph& picture, const Texts& texts) { return Judge(family, picture, texts); });
    });
}
