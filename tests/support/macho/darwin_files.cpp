#include "tests/support/macho/darwin.h"
#include "tests/support/macho/image.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillo::macho {

namespace {

struct pair
{
    int darwin, here;
};

// Where the numbers differ.
constexpr std::array<pair, 26> errors = {{
    {11, EDEADLK},      {35, EAGAIN},        {36, EINPROGRESS},  {37, EALREADY},     {38, ENOTSOCK},
    {40, EMSGSIZE},     {41, EPROTOTYPE},    {42, ENOPROTOOPT},  {45, EOPNOTSUPP},   {47, EAFNOSUPPORT},
    {48, EADDRINUSE},   {49, EADDRNOTAVAIL}, {53, ECONNABORTED}, {54, ECONNRESET},   {55, ENOBUFS},
    {56, EISCONN},      {57, ENOTCONN},      {60, ETIMEDOUT},    {61, ECONNREFUSED}, {62, ELOOP},
    {63, ENAMETOOLONG}, {66, ENOTEMPTY},     {78, ENOSYS},       {84, EOVERFLOW},    {92, EILSEQ},
    {100, EPROTO},
}};

constexpr std::array<pair, 7> open_flags = {{{0x4, O_NONBLOCK},
                                             {0x8, O_APPEND},
                                             {0x100, O_NOFOLLOW},
                                             {0x200, O_CREAT},
                                             {0x400, O_TRUNC},
                                             {0x800, O_EXCL},
                                             {0x1000000, O_CLOEXEC}}};

int flags_from_darwin(int darwin)
{
    int here = darwin & O_ACCMODE;
    for (auto const& flag : open_flags)
        if (darwin & flag.darwin)
            here |= flag.here;
    return here;
}

int flags_to_darwin(int here)
{
    int darwin = here & O_ACCMODE;
    for (auto const& flag : open_flags)
        if (here & flag.here)
            darwin |= flag.darwin;
    return darwin;
}

int control(int descriptor, int command, long argument)
{
    switch (command) { // the commands have the same numbers
    case F_GETFD:
    case F_SETFD:
        return told(::fcntl(descriptor, command, argument));
    case F_SETFL:
        return told(::fcntl(descriptor, command, flags_from_darwin(static_cast<int>(argument))));
    case F_GETFL: {
        int const flags = told(::fcntl(descriptor, command));
        return flags < 0 ? flags : flags_to_darwin(flags);
    }
    default:
        std::abort();
    }
}

// struct stat with 64-bit inodes.
struct darwin_stat
{
    int device;
    unsigned short mode, links;
    unsigned long long inode;
    unsigned user, group;
    int special_device;
    timespec accessed, modified, changed, born;
    long long size, blocks;
    int block_size;
    unsigned flags, generation;
    int spare;
    long long more_spare[2];
};
static_assert(sizeof(darwin_stat) == 144);

int fill(int result, struct stat const& from, darwin_stat* to)
{
    if (told(result) != 0)
        return result;
    *to = {};
    to->device = static_cast<int>(from.st_dev);
    to->mode = static_cast<unsigned short>(from.st_mode);
    to->links = static_cast<unsigned short>(from.st_nlink);
    to->inode = from.st_ino;
    to->user = from.st_uid;
    to->group = from.st_gid;
    to->modified = from.st_mtim;
    to->size = from.st_size;
    return 0;
}

int look_at(char const* path, darwin_stat* to)
{
    struct stat found;
    return fill(::stat(path, &found), found, to);
}
int look_at_link(char const* path, darwin_stat* to)
{
    struct stat found;
    return fill(::lstat(path, &found), found, to);
}

struct darwin_dl_info
{
    char const* file;
    void* base;
    char const* symbol;
    void* address;
};

int find_image(void const* address, darwin_dl_info* info)
{
    image const* const found = image::around(address);
    if (found == nullptr)
        return 0;
    *info = {found->path().c_str(), nullptr, nullptr, nullptr};
    return 1;
}

void* map(void* address, std::size_t size, int protection, int flags, int descriptor, long offset)
{
    constexpr int darwin_anonymous = 0x1000;
    int const here = (flags & 0x13) | (flags & darwin_anonymous ? MAP_ANONYMOUS : 0);
    return told(::mmap(address, size, protection, here, descriptor, offset));
}

int open_shared(char const* name, int flags, unsigned mode)
{
    return told(::shm_open(name, flags_from_darwin(flags), mode));
}

// clang-format off
int can_access(char const* path, int how) { return told(::access(path, how)); }
int close_descriptor(int descriptor) { return told(::close(descriptor)); }
int fill_with_noise(void* to, std::size_t size) { return told(::getentropy(to, size)); }
int make_folder(char const* path, unsigned short mode) { return told(::mkdir(path, mode)); }
int make_pipe(int* ends) { return told(::pipe(ends)); }
int set_size(int descriptor, long size) { return told(::ftruncate(descriptor, size)); }
int unlink_shared(char const* name) { return told(::shm_unlink(name)); }
int unmap(void* address, std::size_t size) { return told(::munmap(address, size)); }
int wait_for_events(pollfd* all, unsigned count, int ms) { return told(::poll(all, count, ms)); } // the same bits
long read_some(int descriptor, void* to, std::size_t size) { return told(::read(descriptor, to, size)); }
long write_some(int descriptor, void const* from, std::size_t size) { return told(::write(descriptor, from, size)); }
// clang-format on

char* full_path(char const* path, char* room)
{
    char* const result = ::realpath(path, room);
    if (result == nullptr)
        *darwin_error() = darwin_number(errno);
    return result;
}

char* describe(int darwin)
{
    for (auto const& error : errors)
        if (error.darwin == darwin)
            return ::strerror(error.here);
    return ::strerror(darwin);
}

} // namespace

int* darwin_error()
{
    thread_local int number = 0;
    return &number;
}

int darwin_number(int error_here)
{
    for (auto const& error : errors)
        if (error.here == error_here)
            return error.darwin;
    return error_here;
}

std::span<adapter const> file_adapters()
{
    static std::array const table = {
        adapt("___error", darwin_error),
        adapt("_access", can_access),
        adapt("_close", close_descriptor),
        adapt("_dladdr", find_image),
        adapt("_fcntl", control),
        adapt("_ftruncate", set_size),
        adapt("_getentropy", fill_with_noise),
        adapt("_lstat$INODE64", look_at_link),
        adapt("_mkdir", make_folder),
        adapt("_mmap", map),
        adapt("_munmap", unmap),
        adapt("_pipe", make_pipe),
        adapt("_poll", wait_for_events),
        adapt("_read", read_some),
        adapt("_realpath$DARWIN_EXTSN", full_path),
        adapt("_shm_open", open_shared),
        adapt("_shm_unlink", unlink_shared),
        adapt("_stat$INODE64", look_at),
        adapt("_strerror", describe),
        adapt("_write", write_some),
    };
    return table;
}

} // namespace quillo::macho
