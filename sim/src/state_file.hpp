// Opening, validating and creating the state file, and the typed view of a
// mapping of it.
#pragma once

#include <memory>
#include <string>

#include "layout.hpp"

namespace swsim {

// Typed pointers into one mapping of the state file.
struct View {
    layout::Header *header = nullptr;
    layout::Runtime *rt = nullptr;
    sw_status_t *status = nullptr;
    uint8_t *image = nullptr;
    layout::ConfigModel *cfg = nullptr;
    layout::Hardware *hw = nullptr;
    layout::Stats *stats = nullptr;
    layout::Fdb *fdb = nullptr;
    layout::Journal *journal = nullptr;
};

// One open, mapped state file.  The descriptor carries the cross-process lock
// bytes (open-file-description locks), so each StateFile is its own lock
// holder.
class StateFile {
public:
    // Opens an existing file; throws Error "PATH: problem".
    static std::unique_ptr<StateFile> open(const std::string &path);
    // Creates a zeroed file of the current layout at `path` (replacing it).
    static std::unique_ptr<StateFile> create(const std::string &path);
    ~StateFile();
    StateFile(const StateFile &) = delete;
    StateFile &operator=(const StateFile &) = delete;

    View &view() { return view_; }
    const View &view() const { return view_; }
    int fd() const { return fd_; }
    const std::string &path() const { return path_; }
    // Gives a fresh open file description to this process after fork(), so
    // that the child's locks are its own.
    void reopen_descriptor();
    // Leaves the mapping in place when this object goes (pointers into it
    // were handed out and must stay valid).
    void keep_mapping() { keep_mapping_ = true; }
    void sync();

private:
    StateFile(std::string path, int fd, uint8_t *base, std::size_t size);
    std::string path_;
    int fd_;
    uint8_t *base_;
    std::size_t size_;
    bool keep_mapping_ = false;
    View view_;
};

}  // namespace swsim
