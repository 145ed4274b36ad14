#include "state_install.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "locks.hpp"
#include "model.hpp"
#include "swsim/control.hpp"

namespace swsim {
namespace {

// The configuration lock of cfg_lock_table: every reader of the switch
// (the agent's handlers, swctl) holds it while it looks.
constexpr int kConfigLock = 2;

struct Extent {
    uint64_t begin, end;
};

// The parts of the file that hold data, in whole pages; the whole file when
// the file system cannot tell.
std::vector<Extent> data_extents(int fd, uint64_t size) {
    std::vector<Extent> out;
    for (off_t at = 0; uint64_t(at) < size;) {
        const off_t data = lseek(fd, at, SEEK_DATA);
        if (data < 0) {
            if (errno == ENXIO) break;  // only a hole is left
            return {{0, size}};
        }
        off_t hole = lseek(fd, data, SEEK_HOLE);
        if (hole < 0) hole = off_t(size);
        const uint64_t begin = uint64_t(data) / layout::kPage * layout::kPage;
        const uint64_t end = std::min<uint64_t>(size, (uint64_t(hole) + layout::kPage - 1) / layout::kPage * layout::kPage);
        out.push_back({begin, end});
        at = off_t(end);
    }
    return out;
}

// Pages where either file holds data, merged and sorted.
std::vector<Extent> union_of(std::vector<Extent> a, const std::vector<Extent> &b) {
    a.insert(a.end(), b.begin(), b.end());
    std::sort(a.begin(), a.end(), [](const Extent &x, const Extent &y) { return x.begin < y.begin; });
    std::vector<Extent> out;
    for (const Extent &e : a) {
        if (!out.empty() && e.begin <= out.back().end)
            out.back().end = std::max(out.back().end, e.end);
        else
            out.push_back(e);
    }
    return out;
}

// Makes the live file read as `from` over [begin, end), writing only the
// pages that differ; pages that become zero are given back to the file
// system, so a smaller switch takes less disk again.
void copy_changed_pages(int fd, uint8_t *to, const uint8_t *from, uint64_t begin, uint64_t end) {
    static const uint8_t kZero[layout::kPage] = {};
    constexpr uint64_t kNone = UINT64_MAX;
    uint64_t zero_from = kNone;  // first of the pages to clear before `at`
    auto clear = [&](uint64_t upto) {
        if (zero_from == kNone) return;
        if (fallocate(fd, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, off_t(zero_from), off_t(upto - zero_from)) != 0)
            std::memset(to + zero_from, 0, upto - zero_from);
        zero_from = kNone;
    };
    for (uint64_t at = begin; at < end; at += layout::kPage) {
        const std::size_t n = std::size_t(std::min<uint64_t>(layout::kPage, end - at));
        if (std::memcmp(to + at, from + at, n) == 0) {
            clear(at);
        } else if (std::memcmp(from + at, kZero, n) == 0) {
            if (zero_from == kNone) zero_from = at;
        } else {
            clear(at);
            std::memcpy(to + at, from + at, n);
        }
    }
    clear(end);
}

// Copies the switch of `fresh` into `live`, under the configuration write
// lock of `live`.  The lock words of `live` stay as they are: the holders
// and waiters they record are the processes using the file now.
void replace_content(StateFile &live, const StateFile &fresh) {
    const uint64_t size = live.view().header->total_size;
    uint8_t *to = reinterpret_cast<uint8_t *>(live.view().header);
    const uint8_t *from = reinterpret_cast<const uint8_t *>(fresh.view().header);
    const std::vector<Extent> pages = union_of(data_extents(live.fd(), size), data_extents(fresh.fd(), size));

    cfg_lock lock{};
    locks::init(lock, kConfigLock);
    locks::WriteGuard guard(lock, live.fd());
    std::memcpy(to, from, layout::kLockBase);  // header fields before the locks
    for (const Extent &e : pages)
        copy_changed_pages(live.fd(), to, from, std::max<uint64_t>(e.begin, layout::kPage), e.end);
    // Every user of the file meets a new switch: its VLAN tables start over.
    model::raise_vlan_flags(live.view());
    live.sync();
}

}  // namespace

void install_state(StateFile &fresh, const std::string &fresh_path, const std::string &state_path) {
    std::unique_ptr<StateFile> live;
    try {
        live = StateFile::open(state_path);
    } catch (const Error &) {
        live.reset();  // none, or one no switch can run on: replaced whole
    }
    if (live) {
        struct Discard {
            const std::string &path;
            ~Discard() { unlink(path.c_str()); }
        } discard{fresh_path};
        replace_content(*live, fresh);
        return;
    }
    if (rename(fresh_path.c_str(), state_path.c_str()) != 0) {
        const std::string why = std::strerror(errno);
        unlink(fresh_path.c_str());
        throw Error(state_path + ": cannot create: " + why);
    }
}

}  // namespace swsim
