// Any bytes as the blocks of which model files are made, in both manners of taking a short file.
#include "foundation/Archive.h"
#include "image/Image.h"

#include <cstdlib>

using namespace Tesk;

namespace {

constexpr ArchiveFormat format{"TSMP", 2, L"File \"%ls\" is not a Sample file",
                               L"The version number \"%d\" of this Sample file is too high"};

void Read(Archive& archive)
{
    archive.Header(format);
    PixelTypes type = Undefined;
    bool flag = false;
    double number = 0;
    int wide = 0;
    archive(type, flag, number);
    archive.As<std::int16_t>(wide);
    std::wstring text;
    archive.Text(text);
    std::vector<double> values;
    archive.Array(values);
    std::vector<Limits> boxes;
    archive.Array(boxes, 16, [](Archive& a, Limits& box) {
        box = Limits(0, 0, 0, 0);
        box.Transfer(a);
    });
    Image image;
    image.Transfer(archive);
    if (image.Type != Undefined && image.BufferSize > 0 && image.Width < 1) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Status::ErrorBehavior(IgnoreIt);
    for (const ShortFile shortFile : {ShortFile::Refused, ShortFile::MayBeEmpty, ShortFile::KeepsFields}) {
        Archive archive = Archive::FromMemory({data, size}, shortFile);
        Read(archive);
        Limits limits(1, 2, 3, 4);
        Archive block = Archive::FromMemory({data, size}, shortFile);
        limits.Transfer(block);
        Image image;
        Archive pixels = Archive::FromMemory({data, size}, shortFile);
        image.Transfer(pixels);
    }
    return 0;
}
