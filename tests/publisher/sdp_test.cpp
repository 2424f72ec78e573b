#include "publisher/sdp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillo::publisher {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

struct description
{
    GstSDPMessage* text = nullptr;

    description()
    {
        gst_init(nullptr, nullptr);
        char const* const given = "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=Session\r\na=tool:other\r\n"
                                  "m=video 0 RTP/AVP 96\r\na=rtpmap:96 raw/90000\r\n"
                                  "a=fmtp:96 sampling=BGR;colorimetry=SMPTE240M;depth=8\r\n"
                                  "m=audio 0 RTP/AVP 97\r\na=rtpmap:97 L24/48000/2\r\n";
        gst_sdp_message_new_from_text(given, &text);
    }
    ~description() { gst_sdp_message_free(text); }
    std::string str() const { return string_ptr{gst_sdp_message_as_text(text)}.get(); }
};

picture_format const ntsc{720, 480, fill::uyvy, {30000, 1001}, {10, 11}, true};

TEST(sdp, raw_pictures_are_described_exactly)
{
    description d;
    describe_raw(*d.text, ntsc);
    EXPECT_THAT(d.str(), HasSubstr("a=fmtp:96 sampling=BGR;colorimetry=BT709-2;depth=8;exactframerate=30000/1001;"
                                   "RANGE=NARROW;TCS=SDR;PAR=10:11\r\n"));
}

TEST(sdp, whole_rates_have_no_denominator_and_rgb_is_full_range)
{
    description d;
    describe_raw(*d.text, {1920, 1080, fill::bgr, {25, 1}, {1, 1}, false});
    EXPECT_THAT(d.str(), HasSubstr(";exactframerate=25;RANGE=FULL;TCS=SDR;PAR=1:1\r\n"));
}

TEST(sdp, key_is_the_last_video_and_grouped_with_its_fill)
{
    GstSDPMessage* text = nullptr;
    gst_init(nullptr, nullptr);
    gst_sdp_message_new_from_text("v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=Session\r\n"
                                  "m=video 0 RTP/AVP 96\r\na=fmtp:96 sampling=YCbCr-4:2:2\r\n"
                                  "m=audio 0 RTP/AVP 97\r\na=rtpmap:97 L24/48000/2\r\n"
                                  "m=video 0 RTP/AVP 98\r\na=fmtp:98 sampling=YCbCr-4:2:2\r\n",
                                  &text);
    describe_key(*text, ntsc);
    std::string const told = string_ptr{gst_sdp_message_as_text(text)}.get();
    gst_sdp_message_free(text);
    EXPECT_THAT(told, HasSubstr("a=group:LS fill key\r\n"));
    EXPECT_THAT(told, HasSubstr("a=fmtp:96 sampling=YCbCr-4:2:2\r\na=mid:fill\r\na=label:fill\r\n"));
    EXPECT_THAT(told, HasSubstr("a=fmtp:98 sampling=YCbCr-4:2:2;colorimetry=BT709-2;exactframerate=30000/1001;"
                                "RANGE=FULL;TCS=SDR;PAR=10:11\r\na=mid:key\r\na=label:key\r\n"
                                "a=x-quillo-alpha:straight\r\n"));
}

TEST(sdp, alpha_within_the_picture_is_straight)
{
    description d;
    describe_alpha(*d.text);
    EXPECT_THAT(d.str(), HasSubstr("a=x-quillo-alpha:straight\r\n"));
}

TEST(sdp, source_is_named_and_woven_fields_are_told)
{
    description d;
    describe_source(*d.text, ntsc, "Adobe Premiere Pro");
    EXPECT_THAT(d.str(), HasSubstr("s=Adobe Premiere Pro\r\n"));
    EXPECT_THAT(d.str(), HasSubstr("a=tool:Quillo Transmit"));
    EXPECT_THAT(d.str(), HasSubstr("a=x-quillo-fields:woven, upper field first\r\n"));
}

TEST(sdp, progressive_pictures_have_no_word_about_fields)
{
    description d;
    describe_source(*d.text, {1920, 1080, fill::uyvy, {25, 1}, {1, 1}, false}, "x");
    EXPECT_THAT(d.str(), Not(HasSubstr("fields")));
}

TEST(sdp, description_without_media_is_left_alone)
{
    GstSDPMessage* empty = nullptr;
    gst_init(nullptr, nullptr);
    gst_sdp_message_new(&empty);
    describe_raw(*empty, ntsc);
    describe_source(*empty, ntsc, "x");
    EXPECT_EQ(gst_sdp_message_medias_len(empty), 0u);
    gst_sdp_message_free(empty);
}

} // namespace
} // namespace quillo::publisher
