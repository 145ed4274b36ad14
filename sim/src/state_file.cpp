#include "state_file.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "state_check.hpp"
#include "swsim/control.hpp"

namespace swsim {
namespace {

[[noreturn]] void fail(const std::string &path, const std::string &problem) {
    throw Error(path + ": " + problem);
}

std::string errno_text() { return std::strerror(errno); }

// Checks the header against this library's layout; the file is `file_size`
// bytes long.
void validate(const std::string &path, const layout::Header &h, uint64_t file_size) {
    if (std::memcmp(h.magic, layout::kMagic, sizeof h.magic) != 0)
        fail(path, "not a switch state file (bad magic)");
    if (h.version > layout::kVersion)
        fail(path, "made by a newer simulator (layout version " + std::to_string(h.version) +
                       ", this one reads " + std::to_string(layout::kVersion) + ")");
    if (h.version < layout::kVersion)
        fail(path, "layout version " + std::to_string(h.version) + " is no longer supported");
    const layout::Geometry g = layout::geometry();
    if (h.total_size != file_size)
        fail(path, "truncated state file (" + std::to_string(file_size) + " of " +
                       std::to_string(h.total_size) + " bytes)");
    if (h.header_size != layout::kPage || h.section_count != layout::kSectionCount ||
        h.total_size != g.total)
        fail(path, "state file layout does not match this simulator (recreate it)");
    for (uint32_t i = 0; i < layout::kSectionCount; ++i)
        if (h.sections[i].offset != g.sections[i].offset || h.sections[i].size != g.sections[i].size)
            fail(path, std::string("section ") + layout::kSectionNames[i] +
                           " does not match this simulator (recreate the state file)");
}

View make_view(uint8_t *base) {
    const layout::Geometry g = layout::geometry();
    auto at = [&](layout::Section s) { return base + g.sections[s].offset; };
    View v;
    v.header = reinterpret_cast<layout::Header *>(base);
    v.rt = reinterpret_cast<layout::Runtime *>(at(layout::kRuntime));
    v.status = reinterpret_cast<sw_status_t *>(at(layout::kStatus));
    v.image = at(layout::kImage);
    v.cfg = reinterpret_cast<layout::ConfigModel *>(v.image);
    v.hw = reinterpret_cast<layout::Hardware *>(at(layout::kHardware));
    v.stats = reinterpret_cast<layout::Stats *>(at(layout::kStats));
    v.fdb = reinterpret_cast<layout::Fdb *>(at(layout::kFdb));
    v.journal = reinterpret_cast<layout::Journal *>(at(layout::kJournal));
    return v;
}

uint8_t *map_file(const std::string &path, int fd, std::size_t size) {
    void *p = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (p == MAP_FAILED) {
        std::string e = errno_text();
        close(fd);
        fail(path, "cannot map: " + e);
    }
    return static_cast<uint8_t *>(p);
}

}  // namespace

StateFile::StateFile(std::string path, int fd, uint8_t *base, std::size_t size)
    : path_(std::move(path)), fd_(fd), base_(base), size_(size), view_(make_view(base)) {}

StateFile::~StateFile() {
    if (!keep_mapping_) munmap(base_, size_);
    close(fd_);
}

std::unique_ptr<StateFile> StateFile::open(const std::string &path) {
    int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT) fail(path, "no switch state file here (create one with swctl create)");
        fail(path, "cannot open: " + errno_text());
    }
    struct stat st {};
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        close(fd);
        fail(path, "not a regular file");
    }
    layout::Header h{};
    ssize_t got = pread(fd, &h, sizeof h, 0);
    if (got < 0) {
        std::string e = errno_text();
        close(fd);
        fail(path, "cannot read: " + e);
    }
    if (std::size_t(got) < sizeof h) {
        close(fd);
        if (got >= ssize_t(sizeof h.magic) && std::memcmp(h.magic, layout::kMagic, sizeof h.magic) != 0)
            fail(path, "not a switch state file (bad magic)");
        fail(path, "truncated state file (" + std::to_string(got) + " bytes, no complete header)");
    }
    try {
        validate(path, h, uint64_t(st.st_size));
    } catch (...) {
        close(fd);
        throw;
    }
    uint8_t *base = map_file(path, fd, h.total_size);
    auto file = std::unique_ptr<StateFile>(new StateFile(path, fd, base, h.total_size));
    if (std::string damage = find_damage(file->view_); !damage.empty()) fail(path, "damaged " + damage);
    return file;
}

std::unique_ptr<StateFile> StateFile::create(const std::string &path) {
    std::error_code ec;
    auto parent = std::filesystem::path(path).parent_path();
    if (!parent.empty()) std::filesystem::create_directories(parent, ec);
    int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) fail(path, "cannot create: " + errno_text());
    const layout::Geometry g = layout::geometry();
    // Sparse: only pages the scenario touches take space.
    if (ftruncate(fd, off_t(g.total)) != 0) {
        std::string e = errno_text();
        close(fd);
        fail(path, "cannot size: " + e);
    }
    uint8_t *base = map_file(path, fd, g.total);
    auto file = std::unique_ptr<StateFile>(new StateFile(path, fd, base, g.total));
    layout::Header &h = *file->view_.header;
    std::memcpy(h.magic, layout::kMagic, sizeof h.magic);
    h.version = layout::kVersion;
    h.header_size = layout::kPage;
    h.total_size = g.total;
    h.section_count = layout::kSectionCount;
    for (uint32_t i = 0; i < layout::kSectionCount; ++i) h.sections[i] = g.sections[i];
    struct timespec now {};
    clock_gettime(CLOCK_REALTIME, &now);
    file->view_.rt->boot_realtime_ns = int64_t(now.tv_sec) * 1000000000 + now.tv_nsec;
    file->view_.fdb->capacity = layout::kFdbCapacity;
    return file;
}

void StateFile::reopen_descriptor() {
    int fresh = ::open(path_.c_str(), O_RDWR | O_CLOEXEC);
    if (fresh < 0) return;  // keep the shared one rather than none
    dup3(fresh, fd_, O_CLOEXEC);
    close(fresh);
}

void StateFile::sync() { msync(base_, size_, MS_SYNC); }

}  // namespace swsim
