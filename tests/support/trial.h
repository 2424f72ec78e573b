// One comparison of a conversion with its reference: the same guarded allocations go to both, and every byte of them
// is compared afterwards, the sources' too.
#pragma once

#include "tests/support/arena.h"
#include "tests/support/contents.h"
#include "tests/support/conversions.h"

#include <array>
#include <memory>
#include <string>

namespace quillo::conversions {

enum class placing {
    between_guards,
    before_unreadable, // the last byte that may be touched is the last one of a page
    after_unreadable   // the first one is the first of a page
};

struct trial
{
    conversion const* row = nullptr;
    int width = 0;
    int height = 0;
    std::array<int, 5> strides{};
    std::array<int, 5> offsets{}; // from a multiple of 64, between guards
    std::array<placing, 5> places{};
    contents content = contents::noise;
    int option = 0;
    bool ask_opaque = true;
};

std::string describe(trial const& t);

class trial_bench
{
  public:
    // Room for planes of this many bytes.
    explicit trial_bench(std::size_t bytes_per_plane = 1 << 19);

    // Empty when every variant of the processor did what the reference does; else the first difference.
    std::string run(trial const& t, random_numbers& random);

  private:
    struct laid_out
    {
        unsigned char* data = nullptr;
        unsigned char* from = nullptr; // touched bytes and guards
        std::size_t bytes = 0;
    };

    laid_out lay_out(trial const& t, std::size_t plane, arena const& in) const;
    void fill_source(trial const& t, std::size_t plane, random_numbers& random);
    static void set_alphas(trial const& t, std::size_t plane, unsigned char* data, random_numbers& random);
    std::string compare(trial const& t, std::size_t plane) const;

    std::array<std::unique_ptr<arena>, 5> given_;    // sources, or what the library writes
    std::array<std::unique_ptr<arena>, 5> expected_; // what they should hold afterwards
    std::array<std::unique_ptr<arena>, 5> before_;   // what destinations held before
};

} // namespace quillo::conversions
