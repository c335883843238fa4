// Frames of an AVI file, by number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct SwsContext;

namespace Tesk::files {

/// How the opening of a sequence ended.
enum class Opened
{
    Yes,
    NoHandler, ///< another kind of file
    Corrupt,
    NoMemory,
    ReadError,
    OpenError,
    NoStream, ///< it holds no pictures
    NoDecoder
};

/// The first video stream of a file. Frames are decoded one after the other, or from the key frame before the one asked
/// for.
class SequenceFile
{
public:
    SequenceFile();
    ~SequenceFile();
    SequenceFile(const SequenceFile&) = delete;
    SequenceFile& operator=(const SequenceFile&) = delete;

    Opened Open(const std::string& path);

    int FirstFrame() const { return firstFrame_; }
    int NumFrames() const { return numFrames_; }
    /// Whole frames a second.
    int FrameRate() const { return frameRate_; }
    int Width() const { return width_; }
    int Height() const { return height_; }
    /// The four characters of the stream's compression.
    const std::wstring& Compression() const { return compression_; }

    /// Decodes a frame, which sets the size; false if there is none.
    bool Fetch(int index);
    /// Converts the frame that was fetched to three bytes a pixel, blue first; false for a format that cannot be.
    bool Convert();
    /// A row of the converted frame, 0 being the one at the bottom.
    const std::uint8_t* Row(int fromBottom) const;

private:
    bool DecodeNext();
    bool Receive();
    bool Rewind(int index);

    template <typename T, void (*release)(T**)>
    struct Release
    {
        void operator()(T* p) const { release(&p); }
    };
    static void CloseFormat(AVFormatContext** format);
    static void CloseCodec(AVCodecContext** codec);
    static void FreeFrame(AVFrame** frame);
    static void FreePacket(AVPacket** packet);
    static void FreeScaler(SwsContext** scaler);

    std::unique_ptr<AVFormatContext, Release<AVFormatContext, CloseFormat>> format_;
    std::unique_ptr<AVCodecContext, Release<AVCodecContext, CloseCodec>> codec_;
    std::unique_ptr<AVFrame, Release<AVFrame, FreeFrame>> frame_;
    std::unique_ptr<AVPacket, Release<AVPacket, FreePacket>> packet_;
    std::unique_ptr<SwsContext, Release<SwsContext, FreeScaler>> scaler_;
    int stream_ = -1, firstFrame_ = 0, numFrames_ = 0, frameRate_ = 0, width_ = 0, height_ = 0;
    std::int64_t next_ = 0; ///< the number of the frame that comes out of the decoder next
    bool drained_ = false;
    std::size_t pitch_ = 0;
    std::vector<std::uint8_t> pixels_; ///< the top row first
    std::wstring compression_;
};

} // namespace Tesk::files
