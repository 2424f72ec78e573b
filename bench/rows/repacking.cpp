#include "Plugins/Plugins.AdobeCC.Transmit/format_conversion.h"
#include "bench/peers/gstreamer.h"
#include "bench/peers/swscale.h"
#include "bench/rows/ours.h"
#include "bench/rows/rows.h"
#include "lib/format_conversion/format_conversion.h"

#include <libyuv.h>

namespace bench {

namespace conversion = Processing::FXlib::format_conversion;

namespace {

// Calls line(n) for every line of the picture.
template <class Line>
candidate by_lines(char const* name, job work, Line line)
{
    return {name, work, [=](frame const& f) {
                for (int n = 0; n < f.height; ++n)
                    line(f, n);
            }};
}

// libyuv functions from one plane to one, two or three.
template <class Function>
candidate libyuv_one_to_one(char const* name, job work, Function function)
{
    return {name, work,
            [=](frame const& f) { function(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.width, f.height); }};
}
template <class Function>
candidate libyuv_one_to_two(char const* name, job work, Function function)
{
    return {name, work, [=](frame const& f) {
                function(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.out[1], f.out_stride[1], f.width,
                         f.height);
            }};
}
template <class Function>
candidate libyuv_one_to_three(char const* name, job work, Function function)
{
    return {name, work, [=](frame const& f) {
                function(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.out[1], f.out_stride[1], f.out[2],
                         f.out_stride[2], f.width, f.height);
            }};
}

void merge_line(unsigned char const* even, unsigned char const* odd, unsigned char* to, int pairs)
{
    libyuv::MergeUVPlane(even, 0, odd, 0, to, 0, pairs, 1);
}
void split_line(unsigned char const* from, unsigned char* even, unsigned char* odd, int pairs)
{
    libyuv::SplitUVPlane(from, 0, even, 0, odd, 0, pairs, 1);
}

void add_splits(std::vector<row>& rows)
{
    auto const y = bytes_per_pixel(1), uyvy = bytes_per_pixel(2), uv_420 = half_the_lines(y),
               u_422 = half_a_byte_per_pixel, u_420 = half_the_lines(u_422);
    rows.push_back({"uyvy::y_uv_422",
                    {uyvy},
                    {y, y},
                    {ours<1, 2>(conversion::uyvy::y_uv_422),
                     {"libyuv SplitUVPlane", job::exact,
                      [](frame const& f) {
                          libyuv::SplitUVPlane(f.in[0], f.in_stride[0], f.out[1], f.out_stride[1], f.out[0],
                                               f.out_stride[0], f.width, f.height);
                      }},
                     gstreamer("UYVY", "NV16", job::exact)}});
    rows.push_back({"uyvy::y_uv_420",
                    {uyvy},
                    {y, uv_420},
                    {ours<1, 2>(conversion::uyvy::y_uv_420),
                     libyuv_one_to_two("libyuv UYVYToNV12", job::close, libyuv::UYVYToNV12),
                     by_lines("libyuv SplitUVPlane, UYVYToY", job::exact,
                              [](frame const& f, int n) {
                                  if (n % 2 == 0)
                                      split_line(source_line(f, 0, n), target_line(f, 1, n / 2), target_line(f, 0, n),
                                                 f.width);
                                  else
                                      libyuv::UYVYToY(source_line(f, 0, n), 0, target_line(f, 0, n), 0, f.width, 1);
                              }),
                     swscale("uyvy422", "nv12", job::close)}});
    rows.push_back({"uyvy::y_u_v_422",
                    {uyvy},
                    {y, u_422, u_422},
                    {ours<1, 3>(conversion::uyvy::y_u_v_422),
                     libyuv_one_to_three("libyuv UYVYToI422", job::exact, libyuv::UYVYToI422),
                     swscale("uyvy422", "yuv422p", job::exact), gstreamer("UYVY", "Y42B", job::exact)}});
    rows.push_back({"uyvy::y_u_v_420",
                    {uyvy},
                    {y, u_420, u_420},
                    {ours<1, 3>(conversion::uyvy::y_u_v_420),
                     libyuv_one_to_three("libyuv UYVYToI420", job::close, libyuv::UYVYToI420),
                     swscale("uyvy422", "yuv420p", job::close), gstreamer("UYVY", "I420", job::close)}});
    rows.push_back(
        {"uyvy::y",
         {uyvy},
         {y},
         {ours<1, 1>(conversion::uyvy::y, false), libyuv_one_to_one("libyuv UYVYToY", job::exact, libyuv::UYVYToY),
          gstreamer("UYVY", "GRAY8", job::exact)}});
    rows.push_back(
        {"uyvy::y/expand",
         {uyvy},
         {y},
         {ours<1, 1>(conversion::uyvy::y, true), libyuv_one_to_one("libyuv UYVYToY", job::less, libyuv::UYVYToY),
          gstreamer("UYVY", "GRAY8", job::close)}});
}

void add_chroma_planes(std::vector<row>& rows)
{
    auto const y = bytes_per_pixel(1), uv_420 = half_the_lines(y), u_420 = half_the_lines(half_a_byte_per_pixel);
    rows.push_back({"y_uv::y_uv",
                    {y, uv_420},
                    {y, uv_420},
                    {ours<2, 2>(conversion::y_uv::y_uv),
                     {"libyuv NV12Copy", job::exact,
                      [](frame const& f) {
                          libyuv::NV12Copy(f.in[0], f.in_stride[0], f.in[1], f.in_stride[1], f.out[0], f.out_stride[0],
                                           f.out[1], f.out_stride[1], f.width, f.height);
                      }},
                     gstreamer("NV12", "NV12", job::exact)}});
    rows.push_back({"y_uv::y_uv_to422",
                    {y, uv_420},
                    {y, y},
                    {ours<2, 2>(conversion::y_uv::y_uv_to422),
                     {"libyuv CopyPlane x3", job::exact,
                      [](frame const& f) {
                          libyuv::CopyPlane(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.width, f.height);
                          for (int below = 0; below < 2; ++below)
                              libyuv::CopyPlane(f.in[1], f.in_stride[1], target_line(f, 1, below), f.out_stride[1] * 2,
                                                f.width, f.height / 2);
                      }},
                     gstreamer("NV12", "NV16", job::exact)}});
    rows.push_back({"y_u_v::y_uv",
                    {y, u_420, u_420},
                    {y, uv_420},
                    {ours<3, 2>(conversion::y_u_v::y_uv),
                     {"libyuv I420ToNV12", job::exact,
                      [](frame const& f) {
                          libyuv::I420ToNV12(f.in[0], f.in_stride[0], f.in[1], f.in_stride[1], f.in[2], f.in_stride[2],
                                             f.out[0], f.out_stride[0], f.out[1], f.out_stride[1], f.width, f.height);
                      }},
                     swscale("yuv420p", "nv12", job::exact)}});
    rows.push_back({"y_u_v::y_uv_to422",
                    {y, u_420, u_420},
                    {y, y},
                    {ours<3, 2>(conversion::y_u_v::y_uv_to422),
                     {"libyuv CopyPlane+MergeUVPlane x2", job::exact,
                      [](frame const& f) {
                          libyuv::CopyPlane(f.in[0], f.in_stride[0], f.out[0], f.out_stride[0], f.width, f.height);
                          for (int below = 0; below < 2; ++below)
                              libyuv::MergeUVPlane(f.in[1], f.in_stride[1], f.in[2], f.in_stride[2],
                                                   target_line(f, 1, below), f.out_stride[1] * 2, f.width / 2,
                                                   f.height / 2);
                      }},
                     gstreamer("I420", "NV16", job::exact)}});
}

void add_joins(std::vector<row>& rows)
{
    auto const y = bytes_per_pixel(1), uyvy = bytes_per_pixel(2), four = bytes_per_pixel(4);
    rows.push_back(
        {"uyvy::yuy2",
         {uyvy},
         {uyvy},
         {ours<1, 1>(conversion::uyvy::yuy2), libyuv_one_to_one("libyuv SwapUVPlane", job::exact, libyuv::SwapUVPlane),
          swscale("uyvy422", "yuyv422", job::exact), gstreamer("UYVY", "YUY2", job::exact)}});
    auto const grey = by_lines("libyuv MergeUVPlane", job::exact, [](frame const& f, int n) {
        merge_line(spare_line(0), source_line(f, 0, n), target_line(f, 0, n), f.width);
    });
    rows.push_back({"y::uyvy", {y}, {uyvy}, {ours<1, 1>(conversion::y::uyvy, false), grey}});
    rows.push_back(
        {"y::uyvy/compress", {y}, {uyvy}, {ours<1, 1>(conversion::y::uyvy, true), {grey.name, job::less, grey.run}}});
    rows.push_back({"uyvy::ycbcrx",
                    {uyvy},
                    {four},
                    {ours<1, 1>(conversion::uyvy::ycbcrx), gstreamer("UYVY", "AYUV", job::close)}});
    rows.push_back({"uyvy_a::ycbcra",
                    {uyvy, y},
                    {four},
                    {ours<2, 1>(conversion::uyvy_a::ycbcra), gstreamer("UYVY", "AYUV", job::less)}});
    rows.push_back({"uyvy_a::crcbya",
                    {uyvy, y},
                    {four},
                    {ours<2, 1>(conversion::uyvy_a::crcbya), gstreamer("UYVY", "VUYA", job::less)}});
    rows.push_back({"uyvy::ya_uv/expand",
                    {uyvy, uyvy},
                    {uyvy, y},
                    {ours<2, 2>(conversion::uyvy::ya_uv, true),
                     by_lines("libyuv SplitUVPlane+UYVYToY+MergeUVPlane", job::less, [](frame const& f, int n) {
                         split_line(source_line(f, 0, n), target_line(f, 1, n), spare_line(0), f.width);
                         libyuv::UYVYToY(source_line(f, 1, n), 0, spare_line(1), 0, f.width, 1);
                         merge_line(spare_line(0), spare_line(1), target_line(f, 0, n), f.width);
                     })}});
    rows.push_back({"uyvy_a::ya_uv",
                    {uyvy, y},
                    {uyvy, y},
                    {ours<2, 2>(conversion::uyvy_a::ya_uv),
                     by_lines("libyuv SplitUVPlane+MergeUVPlane", job::exact, [](frame const& f, int n) {
                         split_line(source_line(f, 0, n), target_line(f, 1, n), spare_line(0), f.width);
                         merge_line(spare_line(0), source_line(f, 1, n), target_line(f, 0, n), f.width);
                     })}});
    // What lies below: a line of black, or what the target holds already.
    auto const blend = [](auto below) {
        return by_lines("libyuv MergeUVPlane+BlendPlane", job::close, [=](frame const& f, int n) {
            merge_line(source_line(f, 1, n), source_line(f, 1, n), spare_line(0), f.width);
            libyuv::BlendPlane(source_line(f, 0, n), 0, below(f, n), 0, spare_line(0), 0, target_line(f, 0, n), 0,
                               f.width * 2, 1);
        });
    };
    rows.push_back({"uyvy_a::uyvy",
                    {uyvy, y},
                    {uyvy},
                    {ours<2, 1>(conversion::uyvy_a::uyvy), blend([](frame const&, int) { return spare_line(2); })}});
    rows.push_back({"composite", {uyvy, y}, {uyvy}, {ours<2, 1>(composite), blend([](frame const& f, int n) {
                                                         return target_line(f, 0, n);
                                                     })}});
}

} // namespace

void add_repacking(std::vector<row>& rows)
{
    add_splits(rows);
    add_chroma_planes(rows);
    add_joins(rows);
}

} // namespace bench
