// Makes exceptions travel through a loaded image: turns its compact unwind records, which only macOS reads, into the
// DWARF records that this process's unwinder takes.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace quillo::macho {

class unwind_tables
{
  public:
    unwind_tables() = default;

    // Takes the records back from the unwinder.
    ~unwind_tables();

    unwind_tables(unwind_tables const&) = delete;
    unwind_tables& operator=(unwind_tables const&) = delete;

    // unwind_info: the mapped section; image: the mapped header, which the records' offsets start at.
    void add(unsigned char const* unwind_info, unsigned char* image);

  private:
    void add_function(unsigned char* function, unsigned char* end, std::uint32_t encoding, void* personality,
                      unsigned char* language_data);
    void hand_over(void* record);

    std::vector<std::unique_ptr<unsigned char[]>> made_;
    std::vector<void*> registered_;
};

} // namespace quillo::macho
