// The store and the window: sizing, sharing, pixel access, entry checks.
#include "image/Image.h"

#include "foundation/Entry.h"
#include "image/core/Refusals.h"

#include <atomic>
#include <cstring>
#include <limits>
#include <utility>

namespace Tesk {

namespace {

constexpr int rowAlignment = 32;
/// Bytes behind the last row: fast paths may run to the next 32-byte step, and the first row may be moved by up to 31.
constexpr int spareBytes = 62;

struct TypeRow
{
    const wchar_t* name;
    int elementSize;
};

constexpr TypeRow typeRows[] = {{L"Undefined", 0}, {L"Gray", 1},     {L"Gray16", 2}, {L"Gray32", 4},  {L"Rgb", 3},
                                {L"Rgba", 4},      {L"Gradient", 4}, {L"Map", 8},    {L"Int", 4},     {L"Float", 4},
                                {L"Dble", 8},      {L"Bool", 1},     {L"IntXY", 0},  {L"FloatXY", 0}, {L"DbleXY", 0},
                                {L"Gray1", 0},     {L"Short", 2}};

const TypeRow& RowOf(PixelTypes Type)
{
    const auto code = static_cast<std::size_t>(Type);
    return typeRows[code < std::size(typeRows) ? code : 0];
}

int DefaultPitch(int width, PixelTypes type)
{
    return (RowBytes(width, type) + 3) & ~3;
}

/// Takes a block for so many bytes, the spare ones behind the last row included.
bool TakeBlock(SharedBytes& block, std::size_t bytes)
{
    // Large blocks come at the same place of a page each. Two sources and a destination then fight for the same sets
    // of the cache, which costs a quarter of the speed on 12 MB images: each block begins some lines further on. All
    // blocks for so many bytes are of one size, so that one that is let go serves the next.
    constexpr std::size_t page = 4096, step = 17 * 64, large = 1 << 17;
    static std::atomic<std::size_t> turn{0};
    const std::size_t shift = bytes < large ? 0 : turn.fetch_add(step, std::memory_order_relaxed) % page;
    if (!block.Allocate(bytes, shift, bytes < large ? 0 : page - shift)) return false;
    // The spare bytes are read by fast paths; what they hold never reaches a result, but it must be defined.
    std::memset(block.Data() + bytes - spareBytes, 0, spareBytes);
    return true;
}

int AlignmentOf(const std::uint8_t* block)
{
    return static_cast<int>(-reinterpret_cast<std::intptr_t>(block) & (rowAlignment - 1));
}

} // namespace

ReadOnly<DraggingHandles, Image> Image::Handle(NoHandle);

int ElementSize(PixelTypes Type)
{
    return RowOf(Type).elementSize;
}

int RowBytes(int Width, PixelTypes Type)
{
    return static_cast<int>(WideRowBytes(Width, Type));
}

std::int64_t WideRowBytes(std::int64_t Width, PixelTypes Type)
{
    return Type == Gray1 ? (Width + 7) >> 3 : Width * ElementSize(Type);
}

const wchar_t* PixelTypeName(PixelTypes Type)
{
    return RowOf(Type).name;
}

std::FILE*& TextOutput()
{
    static std::FILE* stream = stderr;
    return stream;
}

int CheckImage(const Image& Img, PixelTypes Type)
{
    if (Img.Type == Undefined) return Status::Format(VoidObject, L"Void source or destination image");
    if (Type != Undefined && Img.Type != Type)
        return Status::Format(IncompatibleType, L"Incompatible source or destination image type, %ls instead of %ls",
                              PixelTypeName(Img.Type), PixelTypeName(Type));
    return NoError;
}

int CheckImages(const Image& Src, const Image& Dst, PixelTypes Type)
{
    if (Src.Type == Undefined || Dst.Type == Undefined)
        return Status::Format(VoidObject, L"Void source or destination image");
    if (const int code = CheckImage(Src, Type)) return code;
    const PixelTypes wanted = Type == Undefined ? PixelTypes(Src.Type) : Type;
    if (Dst.Type != wanted)
        return Status::Format(IncompatibleType, L"Incompatible source or destination image types, %ls instead of %ls",
                              PixelTypeName(Dst.Type), PixelTypeName(wanted));
    return Src.Width == Dst.Width && Src.Height == Dst.Height ? NoError : images::RefuseSizes(Src, Dst);
}

Image::Image() = default;

bool Image::SharesStores()
{
    return Status::Shallow;
}

void Image::PlaceFirstPixel()
{
    if (!Buffer) {
        FirstPixel = nullptr;
        return;
    }
    FirstPixel = Buffer + AlignOffset + static_cast<std::ptrdiff_t>(Pitch) * Y +
                 static_cast<std::ptrdiff_t>(ElementSize(Type)) * X;
}

void Image::ResetWindow()
{
    X = 0;
    Y = 0;
    Width = StoreWidth;
    Height = StoreHeight;
    PlaceFirstPixel();
}

bool Image::Allocate(int width, int height, PixelTypes type, int pitch)
{
    if (width < 1 || height < 1 || ElementSize(type) + (type == Gray1) == 0) return false;
    // A row and a block must both be addressable with 32 bits, as the recorded sizes are.
    const std::int64_t rowBytes = WideRowBytes(width, type);
    if (rowBytes > std::numeric_limits<int>::max() - 3) return false;
    if (pitch == 0) pitch = DefaultPitch(width, type);
    if (pitch < rowBytes) return false;
    const std::int64_t bytes = std::int64_t{pitch} * height + spareBytes;
    if (bytes > std::numeric_limits<std::uint32_t>::max()) return false;
    if (!TakeBlock(block_, static_cast<std::size_t>(bytes))) return false;
    Buffer = block_.Data();
    BufferSize = static_cast<std::uint32_t>(bytes);
    OwnsBuffer = true;
    AlignOffset = AlignmentOf(block_.Data());
    StoreWidth = width;
    StoreHeight = height;
    Pitch = pitch;
    Type = type;
    askedWidth_ = 0;
    askedHeight_ = 0;
    ResetWindow();
    return true;
}

int Image::TrySet(int Width, int Height, PixelTypes Type, int Pitch)
{
    if (StoreWidth == Width && StoreHeight == Height && this->Type == Type) {
        ResetWindow();
        return NoError;
    }
    if (Allocate(Width, Height, Type, Pitch)) return NoError;
    return Status::Format(CannotAllocate, L"Cannot allocate the image buffer");
}

int Image::Fit(std::int64_t Width, std::int64_t Height, PixelTypes Type)
{
    if (this->Type == Type && this->Width == Width && this->Height == Height) return NoError;
    // A size that no `int` holds becomes one that no store has.
    const auto held = [](std::int64_t size) { return static_cast<int>(size <= MaxInt ? size : 0); };
    return TrySet(held(Width), held(Height), Type);
}

int Image::Settle(PixelTypes Type)
{
    return this->Type == Undefined && askedWidth_ > 0 ? TrySet(askedWidth_, askedHeight_, Type) : NoError;
}

void Image::Set(int Width, int Height)
{
    const Entry entry("Tesk::Image::Set");
    if (Type != Undefined) {
        entry.Refuses(TrySet(Width, Height, Type));
    } else if (Width < 1 || Height < 1) {
        entry.Refuse(CannotAllocate, L"Cannot allocate the image buffer");
    } else {
        askedWidth_ = Width;
        askedHeight_ = Height;
    }
}

void Image::Set(const Image& Src, PixelTypes Type)
{
    const Entry entry("Tesk::Image::Set");
    if (entry.Refuses(CheckImage(Src))) return;
    entry.Refuses(Fit(Src.Width, Src.Height, Type == Undefined ? PixelTypes(Src.Type) : Type));
}

void Image::Set(int Width, int Height, PixelTypes Type, void* Buffer, int Pitch, int Offset)
{
    const Entry entry("Tesk::Image::Set");
    if (Type == Undefined) {
        // A void image: what stood here is let go.
        block_.Reset();
        this->Buffer = nullptr;
        BufferSize = 0;
        OwnsBuffer = false;
        AlignOffset = 0;
        StoreWidth = 0;
        StoreHeight = 0;
        this->Pitch = 0;
        this->Type = Undefined;
        GradGain = 1;
        askedWidth_ = 0;
        askedHeight_ = 0;
        ResetWindow();
        Window(); // reports the void image
        return;
    }
    if (!Buffer) {
        entry.Refuses(TrySet(Width, Height, Type, Pitch));
        return;
    }
    // 64 bits, since a caller may pass any size; a negative pitch lays rows from the bottom.
    const std::int64_t rowBytes = WideRowBytes(Width, Type);
    const bool fits =
        rowBytes <= std::numeric_limits<int>::max() - 3 && (Pitch == 0 || rowBytes <= Abs<std::int64_t>(Pitch));
    if (Width < 1 || Height < 1 || rowBytes < 1 || !fits || Offset < 0) {
        entry.Refuse(OutOfRange, L"An external buffer of %d x %d %ls pixels cannot be used", Width, Height,
                     PixelTypeName(Type));
        return;
    }
    block_.Reset();
    this->Buffer = static_cast<std::uint8_t*>(Buffer);
    this->Pitch = Pitch == 0 ? DefaultPitch(Width, Type) : Pitch;
    BufferSize = static_cast<std::uint32_t>(Height) * static_cast<std::uint32_t>(int(this->Pitch));
    OwnsBuffer = false;
    AlignOffset = Offset;
    StoreWidth = Width;
    StoreHeight = Height;
    this->Type = Type;
    ResetWindow();
}

void Image::Window()
{
    const Entry entry("Tesk::Image::Window");
    if (entry.Refuses(CheckImage(*this))) return;
    ResetWindow();
}

bool Image::Window(int X, int Y, int Width, int Height)
{
    const Entry entry("Tesk::Image::Window");
    if (entry.Refuses(CheckImage(*this))) return false;
    // 64 bits, since a caller may pass any corner and extent.
    std::int64_t x = X, y = Y, width = Width, height = Height;
    bool inside = true;
    const auto clip = [&inside](std::int64_t& from, std::int64_t& extent, int store) {
        if (from < 0) {
            extent += from;
            from = 0;
            inside = false;
        }
        if (from + extent > store) {
            extent = store - from;
            inside = false;
        }
    };
    clip(x, width, StoreWidth);
    clip(y, height, StoreHeight);
    if (width < 1 || height < 1) return inside;
    this->X = static_cast<int>(x);
    this->Y = static_cast<int>(y);
    this->Width = static_cast<int>(width);
    this->Height = static_cast<int>(height);
    PlaceFirstPixel();
    return inside;
}

bool Image::Window(const Limits& Window)
{
    return this->Window(Window.X, Window.Y, Window.Width, Window.Height);
}

bool Image::HasWindow() const
{
    return Width < StoreWidth || Height < StoreHeight;
}

std::uint8_t* Image::FindPixel(int x, int y, PixelTypes type, const char* context) const
{
    const Entry entry(context);
    if (Type != type) {
        entry.Refuse(IncompatibleType, L"Image Type is %ls, %ls was expected", PixelTypeName(Type),
                     type == Grad ? L"Grad" : PixelTypeName(type));
        return nullptr;
    }
    const std::int64_t dx = std::int64_t{x} - X, dy = std::int64_t{y} - Y;
    if (dx < 0 || dx >= Width || dy < 0 || dy >= Height) {
        entry.Refuse(OutOfRange, L"Pixel coordinates (%d, %d) out of the image range [%d..%d] x [%d..%d]",
                     static_cast<int>(dx), static_cast<int>(dy), int(X), X + Width - 1, int(Y), Y + Height - 1);
        return nullptr;
    }
    return FirstPixel + static_cast<std::ptrdiff_t>(Pitch) * dy +
           (type == Gray1 ? dx >> 3 : std::int64_t{ElementSize(type)} * dx);
}

template <typename T>
T& Image::Pixel(int x, int y, PixelTypes type, const char* context) const
{
    thread_local T dummy{};
    std::uint8_t* pixel = FindPixel(x, y, type, context);
    return pixel ? *reinterpret_cast<T*>(pixel) : dummy;
}

GrayPixel& Image::PixelGray(int X, int Y) const
{
    return Pixel<GrayPixel>(X, Y, Gray, "Tesk::Image::PixelGray");
}
Gray16Pixel& Image::PixelGray16(int X, int Y) const
{
    return Pixel<Gray16Pixel>(X, Y, Gray16, "Tesk::Image::PixelGray16");
}
Gray32Pixel& Image::PixelGray32(int X, int Y) const
{
    return Pixel<Gray32Pixel>(X, Y, Gray32, "Tesk::Image::PixelGray32");
}
RgbPixel& Image::PixelRgb(int X, int Y) const
{
    return Pixel<RgbPixel>(X, Y, Rgb, "Tesk::Image::PixelRgb");
}
RgbaPixel& Image::PixelRgba(int X, int Y) const
{
    return Pixel<RgbaPixel>(X, Y, Rgba, "Tesk::Image::PixelRgba");
}
GradPixel& Image::PixelGrad(int X, int Y) const
{
    return Pixel<GradPixel>(X, Y, Grad, "Tesk::Image::PixelGrad");
}

bool Image::PixelGray1(int X, int Y) const
{
    const std::uint8_t* pixel = FindPixel(X, Y, Gray1, "Tesk::Image::PixelGray1");
    return pixel && (*pixel & 0x80 >> ((X - this->X) & 7));
}

void Image::PixelGray1(int X, int Y, bool Value)
{
    std::uint8_t* pixel = FindPixel(X, Y, Gray1, "Tesk::Image::PixelGray1");
    if (!pixel) return;
    const int bit = 0x80 >> ((X - this->X) & 7);
    *pixel = static_cast<std::uint8_t>(Value ? *pixel | bit : *pixel & ~bit);
}

void Image::ShareStore(const Image& src)
{
    block_ = src.block_;
    Buffer = src.Buffer;
    BufferSize = src.BufferSize;
    OwnsBuffer = false;
    Type = src.Type;
    StoreWidth = src.StoreWidth;
    StoreHeight = src.StoreHeight;
    Pitch = src.Pitch;
    GradGain = src.GradGain;
    AlignOffset = src.AlignOffset;
    askedWidth_ = src.askedWidth_;
    askedHeight_ = src.askedHeight_;
}

void Image::TakeWindow(const Image& src)
{
    X = src.X;
    Y = src.Y;
    Width = src.Width;
    Height = src.Height;
}

Image& Image::operator=(const Image& Other)
{
    if (&Other == this) return *this;
    Image copy;
    copy.ShareStore(Other);
    copy.TakeWindow(Other);
    copy.Detach(true);
    if (copy.Buffer && !copy.OwnsBuffer) {
        Status::Raise(Status::Format(CannotAllocate, L"Cannot allocate the image buffer"), "Tesk::Image::operator=");
        return *this;
    }
    ShareStore(copy);
    OwnsBuffer = copy.OwnsBuffer;
    TakeWindow(copy);
    PlaceFirstPixel();
    return *this;
}

void Image::ShallowCopy(const Image& Src, bool KeepWindow)
{
    Status::Error().Code = NoError;
    if (&Src == this) return;
    if (Type != Undefined && StoreWidth != 0 && StoreHeight != 0) {
        const auto scale = [](int value, int to, int from) {
            return static_cast<int>(std::int64_t{to} * value / from);
        };
        X = scale(X, Src.StoreWidth, StoreWidth);
        Y = scale(Y, Src.StoreHeight, StoreHeight);
        // A window scaled down to nothing would be no window: at least one pixel stays.
        Width = Max(scale(Width, Src.StoreWidth, StoreWidth), Src.StoreWidth > 0 ? 1 : 0);
        Height = Max(scale(Height, Src.StoreHeight, StoreHeight), Src.StoreHeight > 0 ? 1 : 0);
    } else {
        X = 0;
        Y = 0;
        Width = Src.Width;
        Height = Src.Height;
    }
    ShareStore(Src);
    if (KeepWindow) TakeWindow(Src);
    PlaceFirstPixel();
}

void Image::Detach(bool CopyPixels)
{
    if (!Buffer) return;
    // An external buffer may hold its rows from the bottom, far apart, and the last one without its fill: the store of
    // one's own has them as any store has.
    const std::size_t pitch = static_cast<std::size_t>(DefaultPitch(StoreWidth, Type));
    const std::size_t bytes = pitch * static_cast<std::size_t>(int(StoreHeight));
    SharedBytes block;
    if (!TakeBlock(block, bytes + spareBytes)) return;
    const int offset = AlignmentOf(block.Data());
    if (CopyPixels) {
        const auto rowBytes = static_cast<std::size_t>(RowBytes(StoreWidth, Type));
        const std::uint8_t* src = Buffer + AlignOffset;
        std::uint8_t* dst = block.Data() + offset;
        for (int y = 0; y < StoreHeight; y++, src += Pitch, dst += pitch)
            std::memcpy(dst, src, rowBytes);
    }
    Pitch = static_cast<int>(pitch);
    block_ = std::move(block);
    Buffer = block_.Data();
    BufferSize = static_cast<std::uint32_t>(bytes + spareBytes);
    AlignOffset = offset;
    OwnsBuffer = true;
    PlaceFirstPixel();
}

} // namespace Tesk
