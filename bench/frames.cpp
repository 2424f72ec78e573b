#include "bench/frames.h"

#include <algorithm>
#include <new>
#include <random>

#include <sys/mman.h>

namespace bench {

namespace {

std::size_t plane_bytes(plane_shape shape, int width, int height)
{
    return static_cast<std::size_t>(shape.stride(width)) * static_cast<std::size_t>(shape.lines(height));
}

std::size_t whole_pages(std::size_t bytes) { return (bytes + 4095) / 4096 * 4096; }

} // namespace

ring::ring(row const& shapes, int width, int height, bool bottom_up, std::size_t bytes, int count)
    : shapes_(shapes), width_(width), height_(height), bottom_up_(bottom_up)
{
    for (auto const& shape : shapes.in)
        in_bytes_ += plane_bytes(shape, width, height);
    for (auto const& shape : shapes.out)
        out_bytes_ += plane_bytes(shape, width, height);
    in_step_ = whole_pages(in_bytes_);
    out_step_ = whole_pages(out_bytes_);
    auto const frames = [&](std::size_t step) {
        return std::max(static_cast<std::size_t>(count), step == 0 ? 1 : bytes / step + (bytes != 0));
    };
    sources_ = frames(in_step_);
    targets_ = frames(out_step_);
    in_ = map(sources_ * in_step_ + 4096);
    out_ = map(targets_ * out_step_ + 4096);
    std::mt19937_64 noise(1);
    std::generate_n(reinterpret_cast<unsigned long long*>(in_.get()), (sources_ * in_step_ + 4096) / 8, noise);
    std::fill_n(out_.get(), targets_ * out_step_ + 4096, static_cast<unsigned char>(1));
}

frame ring::next()
{
    ++position_;
    return at(position_ % sources_, position_ % targets_);
}

frame ring::next_into(std::size_t n)
{
    ++position_;
    return at(position_ % sources_, n % targets_);
}

frame ring::at(std::size_t source, std::size_t target) const
{
    frame f{width_, height_, {}, {}, {}, {}};
    unsigned char const* from = in_.get() + source * in_step_;
    for (std::size_t i = 0; i < shapes_.in.size(); ++i) {
        int const stride = shapes_.in[i].stride(width_), lines = shapes_.in[i].lines(height_);
        f.in[i] = bottom_up_ ? from + static_cast<std::ptrdiff_t>(lines - 1) * stride : from;
        f.in_stride[i] = bottom_up_ ? -stride : stride;
        from += plane_bytes(shapes_.in[i], width_, height_);
    }
    unsigned char* to = out_.get() + target * out_step_;
    for (std::size_t i = 0; i < shapes_.out.size(); ++i) {
        f.out[i] = to;
        f.out_stride[i] = shapes_.out[i].stride(width_);
        to += plane_bytes(shapes_.out[i], width_, height_);
    }
    return f;
}

void ring::unmap::operator()(unsigned char* memory) const { munmap(memory, bytes); }

ring::memory ring::map(std::size_t bytes)
{
    void* const at = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (at == MAP_FAILED)
        throw std::bad_alloc{};
    return memory(static_cast<unsigned char*>(at), unmap{bytes});
}

} // namespace bench
