// The switch writes an RMON event's command script to one fixed path
// (/var/cli-commands/tmp/event_fire).  Tests run as separate processes, in
// parallel, and several of them fire events or take that path away on
// purpose: each such test holds its turn for as long as it uses the path.
// The turn is an flock on a file beside the others, so a test that dies
// gives it up with its process.
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace testing_support {

class ScriptFileTurn {
public:
    ScriptFileTurn() : fd_(::open("/tmp/switch-event-script.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
        while (fd_ >= 0 && ::flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    ~ScriptFileTurn() {
        if (fd_ >= 0) ::close(fd_);
    }
    ScriptFileTurn(const ScriptFileTurn &) = delete;
    ScriptFileTurn &operator=(const ScriptFileTurn &) = delete;

private:
    int fd_;
};

}  // namespace testing_support
