// Fills.
// Strides are in bytes and may be negative; width and height are in pixels.
#pragma once

namespace Processing::FXlib::format_conversion {

namespace black {
// Black UYVY. The pixels behind the last sixteen of a run, the whole picture's when its lines follow each other without
// gaps, take four bytes each: leave room for up to 30 bytes more.
void uyvy(unsigned char* dst, int dst_stride, int width, int height);

// A plane of one value. The first value that a run of 32 bytes or more is filled with is kept for the process: it fills
// all whole blocks of 32 bytes from then on, value only what is behind them.
void alpha(unsigned char* dst, int dst_stride, int width, int height, int value);
} // namespace black

} // namespace Processing::FXlib::format_conversion
