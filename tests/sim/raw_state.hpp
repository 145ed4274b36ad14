// A raw, unchecked mapping of a state file, for tests that look at the
// words the protocols leave behind or damage the file field by field.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "layout.hpp"

namespace simtest {

class RawState {
public:
    explicit RawState(const std::string &path) {
        fd_ = open(path.c_str(), O_RDWR | O_CLOEXEC);
        if (fd_ < 0) return;
        void *p = mmap(nullptr, geometry_.total, PROT_READ | PROT_WRITE, MAP_SHARED, fd_, 0);
        base_ = p == MAP_FAILED ? nullptr : static_cast<uint8_t *>(p);
    }
    ~RawState() {
        if (base_) munmap(base_, geometry_.total);
        if (fd_ >= 0) close(fd_);
    }
    RawState(const RawState &) = delete;
    RawState &operator=(const RawState &) = delete;

    bool ok() const { return base_ != nullptr; }
    template <class T>
    T &at(swsim::layout::Section s) const {
        return *reinterpret_cast<T *>(base_ + geometry_.sections[s].offset);
    }
    swsim::layout::SharedLock &lock(int i) const {
        return reinterpret_cast<swsim::layout::SharedLock *>(base_ + swsim::layout::kLockBase)[i];
    }
    swsim::layout::Runtime &rt() const { return at<swsim::layout::Runtime>(swsim::layout::kRuntime); }
    sw_status_t &status() const { return at<sw_status_t>(swsim::layout::kStatus); }
    uint8_t *image() const { return &at<uint8_t>(swsim::layout::kImage); }
    swsim::layout::ConfigModel &cfg() const { return at<swsim::layout::ConfigModel>(swsim::layout::kImage); }
    swsim::layout::Hardware &hw() const { return at<swsim::layout::Hardware>(swsim::layout::kHardware); }
    swsim::layout::PortCounters &counters(int phys) const {
        return at<swsim::layout::Stats>(swsim::layout::kStats).ports[phys];
    }
    swsim::layout::Fdb &fdb() const { return at<swsim::layout::Fdb>(swsim::layout::kFdb); }
    uint32_t hot() const { return __atomic_load_n(&rt().hot, __ATOMIC_ACQUIRE); }

private:
    swsim::layout::Geometry geometry_ = swsim::layout::geometry();
    int fd_ = -1;
    uint8_t *base_ = nullptr;
};

// The state letter of /proc/PID/stat ('Z' for a zombie), '?' if unreadable.
inline char process_state(pid_t pid) {
    char path[48], buf[512] = {};
    std::snprintf(path, sizeof path, "/proc/%d/stat", int(pid));
    FILE *f = std::fopen(path, "r");
    if (!f) return '?';
    const size_t n = std::fread(buf, 1, sizeof buf - 1, f);
    std::fclose(f);
    buf[n] = '\0';
    const char *p = std::strrchr(buf, ')');
    return p && p[1] == ' ' ? p[2] : '?';
}

}  // namespace simtest
