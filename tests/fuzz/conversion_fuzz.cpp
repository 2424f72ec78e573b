// Any front end with any arguments that its contract allows: it must do what its reference does.
#include "tests/support/sweep.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Inputs alone decide.
    return setenv("QUILLO_SEED", "0", 1);
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    using namespace quillo::conversions;
    static trial_bench bench{1 << 20};
    FuzzedDataProvider input{data, size};
    conversion const& row = all()[input.ConsumeIntegralInRange<std::size_t>(0, all().size() - 1)];
    if (!row.library)
        return 0;
    // Small pictures have every case in them; large ones only come now and then.
    bool const large = input.ConsumeIntegralInRange<int>(0, 15) == 15;
    auto const width = input.ConsumeIntegralInRange<int>(-3, large ? 600 : 140);
    auto const height = input.ConsumeIntegralInRange<int>(-3, large ? 20 : 5);
    random_numbers random{input.ConsumeBytesAsString(8)};
    auto const content = static_cast<contents>(input.ConsumeIntegralInRange<int>(0, kinds_of_contents - 1));
    trial t = draw_trial(row, width, height, stride_kind::mixed, content, random);
    // Now and then strides of the input's own, never shorter than a line.
    for (std::size_t i = 0; i < row.planes.size(); ++i)
        if (!row.outputs_share_stride && input.ConsumeBool()) {
            int const more = input.ConsumeIntegralInRange<int>(0, 999) * row.planes[i].sample_bytes;
            t.strides[i] = (row.planes[i].length(width) + more) * (input.ConsumeBool() ? 1 : -1);
        }
    t.option = input.ConsumeIntegral<int>();
    std::string const problem = bench.run(t, random);
    if (!problem.empty()) {
        std::fputs(problem.c_str(), stderr);
        std::abort();
    }
    return 0;
}
