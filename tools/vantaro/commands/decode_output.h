// Where decoded frames go: YUV4MPEG2, raw planar or packed samples, or PNG
// pictures (one file, or one a frame through a %d pattern).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "commands/common.h"
#include "input/y4m.h"

namespace vantaro::tool {

// The packed outputs are made here from the library's planar output (the
// native door takes planar pictures only): UYVY from 4:2:2, RGB from 4:4:4.
enum class Packing { kNone, kUyvy, kRgb24, kRgba };

struct OutFormat {
    const char* name;
    vantaro_format format;  // what the library decodes into
    bool y4m;               // has a YUV4MPEG2 form
    Chroma chroma;
    Packing packing;
};

enum class Container { kY4m, kRaw, kPng };
Container container_of(const std::string& output);

// --format as asked (empty: the stream's own sampling, or RGB(A) for PNG);
// throws UserError for a format the container cannot hold.
const OutFormat& pick_format(const std::string& asked, const Variant& v, Container c);

class FrameSink {
public:
    virtual ~FrameSink() = default;
    // Turns one decoded frame (`planar`, laid out as vantaro_picture_fill lays
    // out the format) into the bytes write() takes: `planar` itself, or
    // `scratch` filled. Called from several threads at once.
    virtual const std::vector<uint8_t>& prepare(const std::vector<uint8_t>& planar,
                                                std::vector<uint8_t>& scratch) const = 0;
    // Frames in order; `index` is the frame's number in the stream.
    virtual void write(uint64_t index, const std::vector<uint8_t>& prepared) = 0;
    // Puts the output in place under its name; without it nothing appears.
    virtual void commit() = 0;
};

// `picture` gives size, rate and fields; `frames` is how many will come.
std::unique_ptr<FrameSink> make_sink(const std::string& output, Container c, const OutFormat& fmt,
                                     const Y4mFormat& picture, uint64_t frames);

}  // namespace vantaro::tool
