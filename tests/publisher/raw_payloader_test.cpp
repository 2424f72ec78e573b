// Uncompressed pictures in packets: what a receiver puts together from them by RFC 4175 is the picture.
#include "publisher/caps.h"
#include "publisher/mounts/raw_payloader.h"
#include "publisher/pipeline.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <cstring>
#include <mutex>
#include <vector>

namespace quillo::publisher {
namespace {

using bytes = std::vector<unsigned char>;

bytes contents_of(GstBuffer* buffer)
{
    bytes result(gst_buffer_get_size(buffer));
    gst_buffer_extract(buffer, 0, result.data(), result.size());
    return result;
}

// The packets of one picture.
std::vector<buffer_ptr> packets_of(GstBuffer* picture, picture_format const& format, std::size_t mtu)
{
    std::mutex mutex;
    std::condition_variable ended;
    bool complete = false;
    std::vector<buffer_ptr> packets;
    string_ptr const caps{gst_caps_to_string(picture_caps(format).get())};
    pipeline line{"appsrc name=in is-live=true format=time caps=\"" + std::string{caps.get()} + "\" ! " +
                      raw_payloader() + " pt=96 mtu=" + std::to_string(mtu) + " ! appsink name=out sync=false",
                  [&](GstSample* sample) {
                      std::lock_guard const lock{mutex};
                      packets.push_back(retain(gst_sample_get_buffer(sample)));
                      complete = contents_of(packets.back().get())[1] & 0x80;
                      ended.notify_all();
                  }};
    line.push(picture);
    std::unique_lock lock{mutex};
    EXPECT_TRUE(ended.wait_for(lock, std::chrono::seconds{20}, [&] { return complete; }));
    return packets;
}

struct shape
{
    fill layout;
    int width;
    int height;
    std::size_t group_bytes;
    std::size_t group_pixels;
    std::size_t stride;
    std::size_t mtu;
    bool shared; // the packets have no copy of the picture
};

void PrintTo(shape const& s, std::ostream* to) { *to << s.width << 'x' << s.height << " in " << s.mtu; }

class raw_payloader_takes : public ::testing::TestWithParam<shape>
{
};

TEST_P(raw_payloader_takes, every_pixel_once)
{
    gst_init(nullptr, nullptr);
    auto const& [layout, width, height, group_bytes, group_pixels, stride, mtu, shared] = GetParam();
    picture_format format;
    format.layout = layout;
    format.width = width;
    format.height = height;
    std::size_t const line_bytes = static_cast<std::size_t>(width) / group_pixels * group_bytes;
    bytes original(stride * static_cast<std::size_t>(height));
    unsigned value = 1;
    for (auto& byte : original)
        byte = static_cast<unsigned char>((value = value * 1664525 + 1013904223) >> 24);
    auto const picture = adopt<buffer_ptr>(gst_buffer_new_wrapped_full(
        static_cast<GstMemoryFlags>(0), original.data(), original.size(), 0, original.size(), nullptr, nullptr));
    GST_BUFFER_PTS(picture.get()) = GST_SECOND;

    bytes rebuilt(original.size());
    std::vector<int> times(original.size());
    std::uint32_t time = 0;
    auto const packets = packets_of(picture.get(), format, mtu);
    for (auto const& packet : packets) {
        auto const all = contents_of(packet.get());
        ASSERT_LE(all.size(), mtu);
        EXPECT_EQ(all[0], 0x80);
        EXPECT_EQ(all[1] & 0x7F, 96);
        EXPECT_EQ((all[1] & 0x80) != 0, packet == packets.back());
        auto const number = [&](std::size_t at) { return static_cast<std::size_t>(all[at] << 8 | all[at + 1]); };
        std::uint32_t const stamp = static_cast<std::uint32_t>(number(4) << 16 | number(6));
        EXPECT_TRUE(packet == packets.front() || stamp == time);
        time = stamp;
        std::size_t header = 14;
        std::size_t data = header;
        do
            data += 6;
        while (number(data - 2) & 0x8000);
        std::size_t const head = data;
        for (; header < head; header += 6) {
            std::size_t const length = number(header), line = number(header + 2), pixel = number(header + 4) & 0x7FFF;
            EXPECT_EQ(length % group_bytes, 0u);
            EXPECT_EQ(pixel % group_pixels, 0u);
            std::size_t const at = line * stride + pixel / group_pixels * group_bytes;
            ASSERT_LE(data + length, all.size());
            ASSERT_LE(pixel / group_pixels * group_bytes + length, line_bytes);
            ASSERT_LT(line, static_cast<std::size_t>(height));
            std::memcpy(&rebuilt[at], &all[data], length);
            for (std::size_t k = 0; k < length; ++k)
                ++times[at + k];
            data += length;
        }
        EXPECT_EQ(data, all.size());
        if (shared) {
            ASSERT_EQ(gst_buffer_n_memory(packet.get()), 2u);
            GstMapInfo map;
            GstMemory* const slice = gst_buffer_peek_memory(packet.get(), 1);
            ASSERT_TRUE(gst_memory_map(slice, &map, GST_MAP_READ));
            EXPECT_TRUE(map.data >= original.data() && map.data + map.size <= original.data() + original.size());
            gst_memory_unmap(slice, &map);
        }
    }
    for (std::size_t at = 0; at < original.size(); ++at) {
        bool const of_line = at % stride < line_bytes;
        ASSERT_EQ(times[at], of_line ? 1 : 0) << at;
        ASSERT_TRUE(!of_line || rebuilt[at] == original[at]) << at;
    }
}

INSTANTIATE_TEST_SUITE_P(pictures, raw_payloader_takes,
                         ::testing::Values(shape{fill::uyvy, 1920, 1080, 4, 2, 3840, 60000, true},
                                           shape{fill::uyvy, 64, 36, 4, 2, 128, 60000, true},
                                           shape{fill::uyvy, 2, 3, 4, 2, 4, 60000, true},
                                           shape{fill::uyvy, 1918, 5, 4, 2, 3836, 1400, true},
                                           shape{fill::bgr, 640, 48, 3, 1, 1920, 60000, true},
                                           shape{fill::bgr, 636, 7, 3, 1, 1908, 997, true},
                                           shape{fill::bgr, 33, 7, 3, 1, 100, 60000, false},
                                           shape{fill::bgra, 33, 7, 4, 1, 132, 60000, true}));

} // namespace
} // namespace quillo::publisher
