#include "publisher/h264_signal.h"

#include <array>
#include <cstdint>
#include <stdexcept>

namespace quillo::publisher {

namespace {

constexpr unsigned nal_type_sps = 7;
constexpr unsigned extended_sar = 255;
constexpr unsigned bt709 = 1;              // for primaries, transfer and matrix alike
constexpr unsigned unspecified_format = 5; // neither PAL nor NTSC
constexpr std::size_t longest_sps = 1024;  // bytes; real ones have some 30

struct unreadable : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

class bit_reader
{
  public:
    explicit bit_reader(std::span<unsigned char const> bytes) : bytes_(bytes) {}

    unsigned bit()
    {
        if (at_ >= bytes_.size() * 8)
            throw unreadable{"end of parameter set"};
        unsigned const value = bytes_[at_ / 8] >> (7 - at_ % 8) & 1u;
        ++at_;
        return value;
    }
    unsigned bits(int count)
    {
        unsigned value = 0;
        while (count-- > 0)
            value = value << 1 | bit();
        return value;
    }
    unsigned ue()
    {
        int zeros = 0;
        while (bit() == 0)
            if (++zeros > 31)
                throw unreadable{"number too large"};
        return (1u << zeros) - 1 + bits(zeros);
    }
    std::size_t position() const { return at_; }

    // Up to and without the bit that ends the content.
    std::size_t content_end() const
    {
        std::size_t end = bytes_.size() * 8;
        while (end > 0 && !(bytes_[(end - 1) / 8] >> (7 - (end - 1) % 8) & 1u))
            --end;
        return end > 0 ? end - 1 : 0;
    }

  private:
    std::span<unsigned char const> bytes_;
    std::size_t at_ = 0;
};

class bit_writer
{
  public:
    void bits(unsigned value, int count)
    {
        while (count-- > 0) {
            if (used_ % 8 == 0)
                bytes_.push_back(0);
            bytes_.back() = static_cast<unsigned char>(bytes_.back() | (value >> count & 1u) << (7 - used_ % 8));
            ++used_;
        }
    }
    void ue(unsigned value)
    {
        int length = 0;
        while ((value + 1) >> length > 1)
            ++length;
        bits(0, length);
        bits(value + 1, length + 1);
    }
    void copy(std::span<unsigned char const> from, std::size_t begin, std::size_t end)
    {
        for (; begin < end; ++begin)
            bits(from[begin / 8] >> (7 - begin % 8) & 1u, 1);
    }
    std::vector<unsigned char> finished()
    {
        bits(1, 1);
        return std::move(bytes_);
    }

  private:
    std::vector<unsigned char> bytes_;
    std::size_t used_ = 0;
};

// Three bytes that could be taken for a start code are kept apart by a byte in between.
std::vector<unsigned char> unescaped(std::span<unsigned char const> nal)
{
    std::vector<unsigned char> out;
    int zeros = 0;
    for (auto const byte : nal) {
        if (zeros >= 2 && byte == 3) {
            zeros = 0;
            continue;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        out.push_back(byte);
    }
    return out;
}

std::vector<unsigned char> escaped(std::span<unsigned char const> content)
{
    std::vector<unsigned char> out;
    int zeros = 0;
    for (auto const byte : content) {
        if (zeros >= 2 && byte <= 3) {
            out.push_back(3);
            zeros = 0;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        out.push_back(byte);
    }
    return out;
}

void skip_scaling_list(bit_reader& in, int size)
{
    int last = 8, next = 8;
    for (int k = 0; k < size; ++k) {
        if (next != 0) {
            unsigned const code = in.ue();
            int const delta = code & 1 ? static_cast<int>((code + 1) / 2) : -static_cast<int>(code / 2);
            next = (last + delta + 256) % 256;
        }
        last = next == 0 ? last : next;
    }
}

bool has_chroma_format(unsigned profile)
{
    static constexpr std::array<unsigned, 12> profiles{100, 110, 122, 244, 44, 83, 86, 118, 128, 138, 139, 134};
    for (auto const one : profiles)
        if (one == profile)
            return true;
    return false;
}

// Reads from the profile on up to the flag that says whether a signal follows. Number of reference frames.
unsigned skip_to_signal(bit_reader& in)
{
    unsigned const profile = in.bits(8);
    in.bits(16); // constraints, level
    in.ue();     // id
    if (has_chroma_format(profile)) {
        unsigned const chroma = in.ue();
        if (chroma == 3)
            in.bit();
        in.ue();
        in.ue();
        in.bit();
        if (in.bit())
            for (int list = 0; list < (chroma == 3 ? 12 : 8); ++list)
                if (in.bit())
                    skip_scaling_list(in, list < 6 ? 16 : 64);
    }
    in.ue(); // frame number
    unsigned const order = in.ue();
    if (order == 0)
        in.ue();
    else if (order == 1) {
        in.bit();
        in.ue();
        in.ue();
        for (unsigned k = in.ue(); k > 0; --k)
            in.ue();
    }
    unsigned const references = in.ue();
    in.bit();
    in.ue(); // width
    in.ue(); // height
    if (!in.bit())
        in.bit();
    in.bit();
    if (in.bit()) // cropping
        for (int side = 0; side < 4; ++side)
            in.ue();
    return references;
}

void write_aspect(bit_writer& out, rational aspect)
{
    bool const square = aspect == rational{1, 1};
    out.bits(1, 1);
    out.bits(square ? 1 : extended_sar, 8);
    if (!square) {
        out.bits(static_cast<unsigned>(aspect.n), 16);
        out.bits(static_cast<unsigned>(aspect.d), 16);
    }
}

void write_colour(bit_writer& out)
{
    out.bits(1, 1);
    out.bits(unspecified_format, 3);
    out.bits(0, 1); // limited range
    out.bits(1, 1);
    for (int k = 0; k < 3; ++k)
        out.bits(bt709, 8);
}

void write_timing(bit_writer& out, rational rate)
{
    out.bits(1, 1); // a tick is a field
    out.bits(static_cast<unsigned>(rate.d), 32);
    out.bits(static_cast<unsigned>(rate.n) * 2, 32);
    out.bits(1, 1);
}

void write_whole_signal(bit_writer& out, picture_format const& format, unsigned references)
{
    write_aspect(out, format.pixel_aspect);
    out.bits(0, 1); // overscan
    write_colour(out);
    out.bits(0, 1); // chroma location
    write_timing(out, format.rate);
    out.bits(0, 3); // no buffer model, no picture structure
    // Decoders need not hold a picture back to see whether an earlier one comes.
    out.bits(1, 1);
    out.bits(1, 1);
    out.ue(0);
    out.ue(0);
    out.ue(11);
    out.ue(11);
    out.ue(0);
    out.ue(references);
}

// Fills what an encoder's own signal leaves open.
void complete_signal(bit_reader& in, bit_writer& out, std::vector<unsigned char> const& content,
                     picture_format const& format)
{
    std::size_t begin = in.position();
    auto const keep = [&] { out.copy(content, begin, in.position()); };
    if (!in.bit())
        write_aspect(out, format.pixel_aspect);
    else {
        if (in.bits(8) == extended_sar)
            in.bits(32);
        keep();
    }
    begin = in.position();
    if (in.bit()) // overscan
        in.bit();
    keep();
    begin = in.position();
    bool const type = in.bit();
    if (type)
        in.bits(4);
    if (type && in.bit()) {
        in.bits(24);
        keep();
    } else {
        write_colour(out);
    }
    begin = in.position();
    if (in.bit()) { // chroma location
        in.ue();
        in.ue();
    }
    keep();
    begin = in.position();
    if (in.bit())
        keep();
    else
        write_timing(out, format.rate);
    out.copy(content, in.position(), in.content_end());
}

std::vector<unsigned char> rewritten(std::vector<unsigned char> const& content, picture_format const& format)
{
    bit_reader in{content};
    in.bits(8);
    unsigned const references = skip_to_signal(in);
    bit_writer out;
    out.copy(content, 0, in.position());
    out.bits(1, 1);
    if (in.bit())
        complete_signal(in, out, content, format);
    else
        write_whole_signal(out, format, references);
    return out.finished();
}

// Where the next start code begins, and how long it is; the end and 0 when there is none.
std::pair<std::size_t, std::size_t> next_start(std::span<unsigned char const> bytes, std::size_t from)
{
    for (std::size_t k = from; k + 3 <= bytes.size(); ++k)
        if (bytes[k] == 0 && bytes[k + 1] == 0) {
            if (bytes[k + 2] == 1)
                return {k, 3};
            if (k + 4 <= bytes.size() && bytes[k + 2] == 0 && bytes[k + 3] == 1)
                return {k, 4};
        }
    return {bytes.size(), 0};
}

} // namespace

std::vector<unsigned char> with_signal(std::span<unsigned char const> sps, picture_format const& format)
{
    try {
        if (sps.size() <= longest_sps)
            return escaped(rewritten(unescaped(sps), format));
    } catch (unreadable const&) {
    }
    return {sps.begin(), sps.end()};
}

buffer_ptr with_signal(GstBuffer* access_unit, picture_format const& format)
{
    GstMapInfo map;
    if (!gst_buffer_map(access_unit, &map, GST_MAP_READ))
        return retain(access_unit);
    std::span<unsigned char const> const bytes{map.data, map.size};
    std::vector<unsigned char> out;
    out.reserve(bytes.size() + 64);
    auto [at, start] = next_start(bytes, 0);
    bool slices = false;
    while (start > 0 && !slices) {
        std::size_t const nal = at + start;
        unsigned const type = nal < bytes.size() ? bytes[nal] & 31u : 0;
        // Behind the first slice there are no parameter sets.
        slices = type >= 1 && type <= 5;
        auto const [end, next] = slices ? std::pair{bytes.size(), std::size_t{0}} : next_start(bytes, nal);
        auto const whole = bytes.subspan(nal, end - nal);
        out.insert(out.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                   bytes.begin() + static_cast<std::ptrdiff_t>(nal));
        if (type == nal_type_sps) {
            auto const changed = with_signal(whole, format);
            out.insert(out.end(), changed.begin(), changed.end());
        } else {
            out.insert(out.end(), whole.begin(), whole.end());
        }
        at = end;
        start = next;
    }
    gst_buffer_unmap(access_unit, &map);
    if (out.empty())
        return retain(access_unit);

    auto changed = adopt<buffer_ptr>(gst_buffer_new_memdup(out.data(), out.size()));
    gst_buffer_copy_into(changed.get(), access_unit,
                         static_cast<GstBufferCopyFlags>(GST_BUFFER_COPY_FLAGS | GST_BUFFER_COPY_TIMESTAMPS), 0,
                         static_cast<gsize>(-1));
    return changed;
}

} // namespace quillo::publisher
