// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

struct AVCodecContext;
struct AVCodecParameters;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;

/// Owners of what FFmpeg makes. Any thread.
namespace vantiro::ffmpeg {

struct Release {
    void operator()(AVCodecContext* context) const;
    void operator()(AVCodecParameters* parameters) const;
    void operator()(AVPacket* packet) const;
    void operator()(AVFrame* frame) const;
};

struct ReleaseInput {
    void operator()(AVFormatContext* context) const;
};

/// Closes the file as well.
struct ReleaseOutput {
    void operator()(AVFormatContext* context) const;
};

using Codec = std::unique_ptr<AVCodecContext, Release>;
using Parameters = std::unique_ptr<AVCodecParameters, Release>;
using Packet = std::unique_ptr<AVPacket, Release>;
using Frame = std::unique_ptr<AVFrame, Release>;
using Input = std::unique_ptr<AVFormatContext, ReleaseInput>;
using Output = std::unique_ptr<AVFormatContext, ReleaseOutput>;

/// A path as FFmpeg takes it: with its protocol in front, no file name looks like an address.
[[nodiscard]] QByteArray address(const QString& path);

/// What is wrong is told by the failures; the terminal belongs to the program.
void silenceLog();

/// What a file has to say of an encoder; null without memory.
[[nodiscard]] Parameters parametersOf(const AVCodecContext& codec);

/// The number in a failure of FFmpeg: a positive errno, or one of its own, which are far larger.
[[nodiscard]] int statusOf(int code);

}  // namespace vantiro::ffmpeg
