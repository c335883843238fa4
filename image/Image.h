// The pixel container of the library: a store of rows, and a window on it through which every operation works.
#pragma once

#include "foundation/CopyOnWrite.h"
#include "foundation/ReadOnly.h"
#include "foundation/Records.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace Tesk {

class Archive;
class Entry;
class Profile;
struct ImageView;

namespace files {
struct ImageFile;
}

/// Bytes of one pixel; 0 for `Undefined`, the packed `Gray1`, and the types that images do not hold.
int ElementSize(PixelTypes Type);
/// Bytes of a row of pixels, packed for `Gray1`.
int RowBytes(int Width, PixelTypes Type);
/// The same for rows that no image may hold.
std::int64_t WideRowBytes(std::int64_t Width, PixelTypes Type);
/// The name of a pixel type in messages: "Gray", "Gradient", "Map".
const wchar_t* PixelTypeName(PixelTypes Type);

/// Rows of pixels of one type in a store, which images may share, and the window of it that operations work on.
///
///     Image image;
///     image.Read("part.png", Gray);
///     image.Window(100, 80, 320, 240); // what follows works there alone
///     Kernel::Smooth(image, image);
///     image.Write("smooth.png"); // 320 x 240 pixels
class Image
{
    template <typename T>
    using Field = ReadOnly<T, Image>;

public:
    Field<int> X, Y;                 ///< top-left corner of the window, in store coordinates
    Field<int> Width, Height;        ///< extent of the window, in pixels
    Field<std::uint8_t*> FirstPixel; ///< the window's top-left pixel; null while there is no buffer
    Field<int> Pitch;                ///< bytes from one row to the next
    Field<PixelTypes> Type;          ///< `Undefined` marks a void image
    Field<int> StoreWidth, StoreHeight;
    Field<std::uint8_t*> Buffer;
    Field<std::uint32_t> BufferSize;
    Field<bool> OwnsBuffer;
    int GradGain = 1;       ///< divisor that turns a `Grad` pixel into a gray value
    Field<int> AlignOffset; ///< bytes from `Buffer` to the first stored row

    /// Makes a void image.
    Image();
    /// Nothing copies an image on the way: a copy is assigned, or made by `Operator::Copy`, a view by `ShallowCopy`.
    Image(const Image&) = delete;
    /// Takes pixels, type and window of another image, in a store of its own. The last error stays as it is, that of
    /// the method whose result is assigned. Refused, leaving the image as it was: no memory (`CannotAllocate`).
    Image& operator=(const Image& Other);

    /// Gives this image the window size of `Src` and `Type` (that of `Src` if `Undefined`). Pixels and window stay
    /// where they are if the window already fits. Refused: a void `Src` (`VoidObject`), no memory (`CannotAllocate`).
    void Set(const Image& Src, PixelTypes Type = Undefined);
    /// Gives this image a store of that size and type, or lays it over an external buffer that the caller keeps alive.
    /// The first row begins `Offset` bytes into that buffer; with a negative `Pitch` the rows run upwards from there.
    /// Refused: no memory, sizes below 1 or over what a store can hold (`CannotAllocate`); an external buffer of such a
    /// size, of a `Pitch` that is shorter than a row, or of a negative `Offset` (`OutOfRange`); `Undefined`, which lets
    /// go of what stood here (`VoidObject`).
    void Set(int Width, int Height, PixelTypes Type, void* Buffer = nullptr, int Pitch = 0, int Offset = 0);
    /// Gives this image a store of that size and of the type that it has. A void image stays void until an operation
    /// that fills its destination as it stands (a constant, a warp) gives it the size asked for, and a type. Refused as
    /// above (`CannotAllocate`).
    void Set(int Width, int Height);

    /// Resets the window to the whole store.
    void Window();
    /// Clips a window to the store and sets it; false if it was clipped. An empty window changes nothing.
    bool Window(int X, int Y, int Width, int Height);
    bool Window(const Limits& Window);
    /// Whether the window is smaller than the store.
    bool HasWindow() const;

    /// Pixels by store coordinates, inside the window. Refused: another pixel type (`IncompatibleType`), a place
    /// outside the window (`OutOfRange`); the reference is then to a dummy pixel.
    GrayPixel& PixelGray(int X, int Y) const;
    Gray16Pixel& PixelGray16(int X, int Y) const;
    Gray32Pixel& PixelGray32(int X, int Y) const;
    RgbPixel& PixelRgb(int X, int Y) const;
    RgbaPixel& PixelRgba(int X, int Y) const;
    GradPixel& PixelGrad(int X, int Y) const;
    bool PixelGray1(int X, int Y) const;
    void PixelGray1(int X, int Y, bool Value);

    /// Reads an image file; the format goes by the extension: BMP, PBM, PGM, PPM, PNG, JPEG, TIFF. `Undefined` asks
    /// for the file's own pixel type. Refused, leaving the image as it was: a file that cannot be opened (`CannotOpen`)
    /// or is broken (`CannotRead`) or of another kind (`UnsupportedFormat`), a type that it does not convert to
    /// (`IncompatibleType`), no memory
    /// (`CannotAllocate`). Another type than `Undefined`, `Gray`, `Gray16`, `Rgb` and `Gray1` is reported
    /// (`UnsupportedType`), and read all the same where the file converts to it.
    void Read(const char* PathName, PixelTypes Type = Gray);
    void Read(const wchar_t* PathName, PixelTypes Type = Gray);
    /// Writes the window to a file; an unknown extension writes BMP. Refused: a void image (`VoidObject`), a type that
    /// the format does not hold (`UnsupportedType`), a file that cannot be opened (`CannotOpen`) or written
    /// (`CannotWrite`).
    void Write(const char* PathName) const;
    void Write(const wchar_t* PathName) const;

    /// Draws the window, or the whole store, on the current target of `Graph`: gray values as they are, those beyond 8
    /// bits by `Operator::GrayDepth`, a gradient by its strength over `GradGain`. A void image draws nothing.
    void Draw(bool WindowOnly) const;
    /// A `Gray` image as a table of 256 entries shows it. Refused: another image (`UnsupportedType`), a table that is
    /// neither `Gray` nor `Rgb` (`IncompatibleType`) or of another length (`IncompatibleSize`).
    void Draw(const Profile& LookupTable, bool WindowOnly) const;
    /// Outlines the window in `Graph::LineColor` or another colour, with discs at its corners if `Handles`, and with
    /// its diagonals if `Cross`.
    void DrawWindow(bool Handles, bool Cross = false) const;
    void DrawWindow(bool Handles, PredefinedColors Color, bool Cross = false) const;
    /// The window handle under a point of the screen; kept in `Handle` for `Drag`.
    DraggingHandles HitHandle(int X, int Y) const;
    /// Moves the handle last hit to a point of the screen.
    void Drag(int X, int Y);
    static ReadOnly<DraggingHandles, Image> Handle;

    /// Shares the pixels of `Src`. The window keeps its relative place, or with `KeepWindow` becomes that of `Src`.
    void ShallowCopy(const Image& Src, bool KeepWindow);
    /// Moves to a store of its own, with the pixels if `CopyPixels`, so that those who share the former one keep
    /// theirs.
    void Detach(bool CopyPixels);
    /// Under `Status::Shallow`, detaches before a write; `CopyPixels` where the destination is also read. A store that
    /// nobody else holds is kept.
    void DetachIfShared(bool CopyPixels)
    {
        if (SharesStores() && !block_.IsSole()) Detach(CopyPixels || HasWindow());
    }

    /// Prints type, size and the first and last pixels to the library's text output.
    void Print(int Rows, int Columns) const;

    /// The block form inside model files: type, size, gain, and the rows of the window without any fill.
    /// Refused: a block that promises more than the file holds (`CannotRead`), one of no type (`VoidObject`), no memory
    /// (`CannotAllocate`). A block of no type makes the image void if it `MayBeVoid`.
    void Transfer(Archive& Block, bool MayBeVoid = false);

    /// The inner form of `Set` without a buffer: an `ErrorCodes` value, for callers that report under a name of their
    /// own.
    int TrySet(int Width, int Height, PixelTypes Type, int Pitch = 0);
    /// That of `Set` by another image, of which this is the window size: a window that fits stays where it is.
    int Fit(std::int64_t Width, std::int64_t Height, PixelTypes Type);
    /// Gives a void image that was asked for a size a store of that size and `Type`; changes no other image.
    int Settle(PixelTypes Type);

    /// A row of the window.
    template <typename T = std::uint8_t>
    T* Row(int y) const
    {
        return reinterpret_cast<T*>(FirstPixel + static_cast<std::ptrdiff_t>(Pitch) * y);
    }

private:
    static bool SharesStores();
    ImageView View(bool windowOnly) const;
    void Read(const Entry& entry, files::ImageFile& file, PixelTypes type);
    void Write(const Entry& entry, files::ImageFile& file) const;
    bool Allocate(int width, int height, PixelTypes type, int pitch);
    void PlaceFirstPixel();
    void ResetWindow();
    void ShareStore(const Image& src);
    void TakeWindow(const Image& src);
    template <typename T>
    T& Pixel(int x, int y, PixelTypes type, const char* context) const;
    std::uint8_t* FindPixel(int x, int y, PixelTypes type, const char* context) const;

    int askedWidth_ = 0, askedHeight_ = 0; ///< the size that a void image will have
    SharedBytes block_; ///< keeps `Buffer` alive among all that share it; empty over an external buffer
};

/// A void image, or a type other than the one wanted. The result is an `ErrorCodes` value with its message stored.
int CheckImage(const Image& Img, PixelTypes Type = Undefined);
/// Two images of one type (or of `Type`) and of one window size.
int CheckImages(const Image& Src, const Image& Dst, PixelTypes Type = Undefined);

/// Where `Print` and the file readers' diagnostics go; standard error until changed, null for silence.
std::FILE*& TextOutput();

} // namespace Tesk
