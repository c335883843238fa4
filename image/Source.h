// Where images come from and go to, other than files.
#pragma once

#include "foundation/ReadOnly.h"
#include "image/Image.h"

#include <memory>
#include <string>

namespace Tesk {

namespace files {
enum class Opened;
class SequenceFile;
} // namespace files

/// A stream of frames: a list of image files, or the pictures of an AVI file. And what comes from the clipboard or goes
/// to it. One thread at a time may use a source. Each operation refuses for want of memory with `CannotAllocate`.
///
///     Source frames;
///     frames.OpenSequenceFile("line3.avi");
///     Image frame;
///     for (bool more = true; more;) {
///         more = frames.Grab(frame, Gray);
///         ...
///     }
///     Source::CopyToClipboard(frame);
class Source
{
    template <typename T>
    using Field = ReadOnly<T, Source>;

public:
    SourceMode Mode = Idle;
    Field<int> NumFrames;        ///< frames or file names
    double FrameRate = 1;        ///< whole frames a second; 1 for files
    int CurrentFrame = 0;        ///< index of the one that is grabbed next
    bool FieldMode = false;      ///< frames are interlaced: every second row is taken, the others are interpolated
    Field<bool> OwnsHandle;      ///< false for a shallow copy, which shares what it copied for as long as it lives
    Field<int> Width, Height;    ///< of the frames of a sequence
    Field<PixelTypes> PixelType; ///< of the frames of a sequence
    Field<const void*> Handle;   ///< what the frames come from; null while idle
    /// Delivers the frames of a sequence upright. Without it their bottom row becomes row 0, as they are stored.
    bool Upright = false;

    /// Adds a file of any format that `Image::Read` takes. A list has names of one kind. Refused: a source of another
    /// mode
    /// (`IncompatibleMode`).
    void AddFile(const char* Name);
    void AddFile(const wchar_t* Name);
    /// Opens an AVI file whose pictures the decoders of FFmpeg can decode. A failure leaves the source as it was, or
    /// idle where the file has no pictures or no decoder. Refused: `CannotOpen`, `CannotRead`, `UnsupportedFormat`.
    void OpenSequenceFile(const char* Name);
    void OpenSequenceFile(const wchar_t* Name);
    /// Reads the current frame as `Gray` or `Rgb` and moves on, from the last one to the first; whether frames remain.
    /// The gray value of a frame in colour is its blue. `Undefined` is `Rgb` for a sequence and `Gray` for files.
    /// Refused, with false: another type (`UnsupportedType`), an idle source (`VoidObject`), a frame that cannot be
    /// decoded
    /// (`CannotRead`); what `Image::Read` refuses is its own report, and the source moves on.
    bool Grab(Image& Dst, PixelTypes Type = Undefined);
    /// For cameras, of which the library has no driver. Refused: a source of another mode (`CannotRead`).
    bool Input();
    void Output();
    void Close();
    /// Shares the list or the sequence of another source; its position, too, with `KeepPosition`.
    void ShallowCopy(const Source& Src, bool KeepPosition);

    /// Puts the window of an image on the clipboard as a device-independent bitmap.
    /// Types: `Gray`, `Rgb`, `Rgba`. Refused: another type (`UnsupportedType`), a void image (`VoidObject`).
    static void CopyToClipboard(const Image& Src);
    /// Puts the window of a profile on the clipboard as text, a line for each sample: its value, or red, green and blue
    /// between tabs. Types: `Gray`, `Rgb`. Refused: another type (`UnsupportedType`), an empty profile (`VoidObject`).
    static void CopyToClipboard(const Profile& Src);
    /// Puts a picture of the client area of a window of the desktop on the clipboard.
    /// Refused: a handle of no window (`CannotPerform`).
    static void CopyToClipboard(void* Window);
    /// Takes a device-independent bitmap from the clipboard: 8 bits a pixel become `Gray`, 24 `Rgb`, 32 `Rgba`.
    /// Refused: no bitmap, or a broken one (`CannotRead`); compression, another depth (`UnsupportedType`).
    static void PasteFromClipboard(Image& Dst);

private:
    struct Names;

    template <typename Char>
    void Add(const Char* name, SourceMode mode);
    template <typename Describe>
    void Open(const std::string& path, Describe describe);
    int TakeSequence(std::shared_ptr<files::SequenceFile> sequence, files::Opened outcome);
    int FetchFrame(Image& dst, PixelTypes type);
    int SourceIsNotOpened() const;
    void Drop();

    std::shared_ptr<Names> names_;
    std::shared_ptr<files::SequenceFile> sequence_;
};

} // namespace Tesk
