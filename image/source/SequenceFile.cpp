// AVI files, read by FFmpeg's libraries.
#include "image/source/SequenceFile.h"

#include "foundation/Records.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace Tesk::files {

namespace {

/// A frame of more pixels is taken for a broken header.
constexpr std::int64_t mostPixels = std::int64_t{1} << 28;
/// Packets without a picture that are read in a row before a stream is given up.
constexpr int mostIdlePackets = 1000;

bool IsAvi(const std::string& path, Opened& failure)
{
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) {
        failure = Opened::OpenError;
        return false;
    }
    std::array<char, 12> head{};
    const std::size_t count = std::fread(head.data(), 1, head.size(), file);
    const bool broken = std::ferror(file) != 0;
    std::fclose(file);
    failure = broken ? Opened::ReadError : Opened::NoHandler;
    return count == head.size() && !std::memcmp(head.data(), "RIFF", 4) && !std::memcmp(&head[8], "AVI ", 4);
}

Opened Failure(int code)
{
    switch (code) {
    case AVERROR(ENOMEM):
        return Opened::NoMemory;
    case AVERROR(EIO):
        return Opened::ReadError;
    case AVERROR(ENOENT):
    case AVERROR(EACCES):
        return Opened::OpenError;
    default:
        return Opened::Corrupt;
    }
}

int Whole(std::int64_t value)
{
    return static_cast<int>(Clamp<std::int64_t>(value, 0, std::numeric_limits<int>::max()));
}

} // namespace

SequenceFile::SequenceFile() = default;
SequenceFile::~SequenceFile() = default;

void SequenceFile::CloseFormat(AVFormatContext** format)
{
    avformat_close_input(format);
}

void SequenceFile::CloseCodec(AVCodecContext** codec)
{
    avcodec_free_context(codec);
}

void SequenceFile::FreeFrame(AVFrame** frame)
{
    av_frame_free(frame);
}

void SequenceFile::FreePacket(AVPacket** packet)
{
    av_packet_free(packet);
}

void SequenceFile::FreeScaler(SwsContext** scaler)
{
    sws_freeContext(*scaler);
}

Opened SequenceFile::Open(const std::string& path)
{
    // What it would print is told by the codes.
    av_log_set_level(AV_LOG_QUIET);
    Opened failure{};
    if (!IsAvi(path, failure)) return failure;
    AVFormatContext* format = nullptr;
    // The protocol is named, lest a name be taken for an address.
    if (const int code = avformat_open_input(&format, ("file:" + path).c_str(), av_find_input_format("avi"), nullptr);
        code < 0)
        return Failure(code);
    format_.reset(format);
    for (unsigned i = 0; i < format->nb_streams && stream_ < 0; i++)
        if (format->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_VIDEO) stream_ = static_cast<int>(i);
    if (stream_ < 0) return Opened::NoStream;
    for (unsigned i = 0; i < format->nb_streams; i++)
        format->streams[i]->discard = static_cast<int>(i) == stream_ ? AVDISCARD_DEFAULT : AVDISCARD_ALL;

    const AVStream& stream = *format->streams[stream_];
    const AVCodecParameters& parameters = *stream.codecpar;
    for (int i = 0; i < 4; i++)
        if (const auto c = static_cast<unsigned char>(parameters.codec_tag >> 8 * i))
            compression_ += static_cast<wchar_t>(c);
    firstFrame_ = stream.start_time == AV_NOPTS_VALUE ? 0 : Whole(stream.start_time);
    // The unit of time is a frame.
    numFrames_ = Whole(stream.nb_frames > 0 ? stream.nb_frames : stream.duration);
    frameRate_ = stream.time_base.num > 0 ? stream.time_base.den / stream.time_base.num : 0;
    width_ = parameters.width;
    height_ = Abs(parameters.height);

    const AVCodec* decoder = avcodec_find_decoder(parameters.codec_id);
    codec_.reset(decoder ? avcodec_alloc_context3(decoder) : nullptr);
    if (!codec_ || avcodec_parameters_to_context(codec_.get(), &parameters) < 0) return Opened::NoDecoder;
    codec_->max_pixels = mostPixels;
    codec_->thread_count = 1;
    if (avcodec_open2(codec_.get(), decoder, nullptr) < 0) return Opened::NoDecoder;
    frame_.reset(av_frame_alloc());
    packet_.reset(av_packet_alloc());
    if (!frame_ || !packet_) return Opened::NoMemory;
    next_ = firstFrame_;
    return Opened::Yes;
}

/// Takes a picture that the decoder has ready.
bool SequenceFile::Receive()
{
    if (avcodec_receive_frame(codec_.get(), frame_.get()) < 0) return false;
    // Frames that were dropped when the file was made leave gaps in the numbers.
    next_ = (frame_->best_effort_timestamp == AV_NOPTS_VALUE ? next_ : frame_->best_effort_timestamp) + 1;
    return frame_->width > 0 && frame_->height > 0;
}

bool SequenceFile::DecodeNext()
{
    for (int idle = 0; idle < mostIdlePackets; idle++) {
        if (Receive()) return true;
        if (drained_) return false;
        if (av_read_frame(format_.get(), packet_.get()) < 0) {
            drained_ = true;
            avcodec_send_packet(codec_.get(), nullptr);
            continue;
        }
        // A packet that is broken gives no picture; the next one may.
        if (packet_->stream_index == stream_) avcodec_send_packet(codec_.get(), packet_.get());
        av_packet_unref(packet_.get());
    }
    return false;
}

/// Goes to the key frame at or before a frame.
bool SequenceFile::Rewind(int index)
{
    const bool found = av_seek_frame(format_.get(), stream_, index, AVSEEK_FLAG_BACKWARD) >= 0 ||
                       av_seek_frame(format_.get(), stream_, firstFrame_, AVSEEK_FLAG_BACKWARD) >= 0;
    avcodec_flush_buffers(codec_.get());
    drained_ = false;
    next_ = firstFrame_;
    return found && DecodeNext();
}

bool SequenceFile::Fetch(int index)
{
    if (!codec_) return false;
    // Nearby frames are reached by decoding what lies between.
    constexpr int nearby = 32;
    if (index < next_ || index > next_ + nearby) {
        if (!Rewind(index)) return false;
    } else if (!DecodeNext()) {
        return false;
    }
    while (next_ <= index)
        if (!DecodeNext()) return false;
    width_ = frame_->width;
    height_ = frame_->height;
    return std::int64_t{width_} * height_ <= mostPixels;
}

bool SequenceFile::Convert()
{
    const auto format = static_cast<AVPixelFormat>(frame_->format);
    if (!sws_isSupportedInput(format) || !frame_->data[0]) return false;
    scaler_.reset(sws_getCachedContext(scaler_.release(), width_, height_, format, width_, height_, AV_PIX_FMT_BGR24,
                                       SWS_BILINEAR | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_BITEXACT, nullptr,
                                       nullptr, nullptr));
    if (!scaler_) return false;
    // The scaler may write whole vectors.
    constexpr std::size_t vector = 64;
    pitch_ = (3 * static_cast<std::size_t>(width_) + 2 * vector) / vector * vector;
    pixels_.resize(pitch_ * static_cast<std::size_t>(height_) + vector);
    std::uint8_t* const planes[4] = {pixels_.data(), nullptr, nullptr, nullptr};
    const int pitches[4] = {static_cast<int>(pitch_), 0, 0, 0};
    return sws_scale(scaler_.get(), frame_->data, frame_->linesize, 0, height_, planes, pitches) == height_;
}

const std::uint8_t* SequenceFile::Row(int fromBottom) const
{
    return pixels_.data() + pitch_ * static_cast<std::size_t>(height_ - 1 - fromBottom);
}

} // namespace Tesk::files
