#include "helpers.hpp"

#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

extern char **environ;

namespace swsim::helpers {
namespace {

// Reads a decimal number of 1..max_digits digits; advances p.
bool read_number(const char *&p, int max_digits, unsigned long &out) {
    int digits = 0;
    unsigned long v = 0;
    while (*p >= '0' && *p <= '9') {
        if (++digits > max_digits) return false;
        v = v * 10 + unsigned(*p++ - '0');
    }
    out = v;
    return digits > 0;
}

// Dotted quad, each part 0..255, nothing else; host-order word.
bool parse_quad(const char *&p, uint32_t &addr) {
    uint32_t v = 0;
    for (int i = 0; i < 4; ++i) {
        unsigned long part;
        if (i > 0 && *p++ != '.') return false;
        if (!read_number(p, 3, part) || part > 255) return false;
        v = v << 8 | uint32_t(part);
    }
    addr = v;
    return true;
}

}  // namespace

int ip_str_to_uint32(const char *text, uint32_t *addr) {
    if (!text || !addr) return -1;
    uint32_t v;
    if (!parse_quad(text, v) || *text) return -1;
    *addr = v;
    return 0;
}

int ip_uint32_to_str(uint32_t addr, char *buf, size_t size) {
    if (!buf) return -1;
    char tmp[16];
    int n = std::snprintf(tmp, sizeof tmp, "%u.%u.%u.%u", addr >> 24, addr >> 16 & 255, addr >> 8 & 255,
                          addr & 255);
    if (n < 0 || size_t(n) >= size) return -1;
    std::memcpy(buf, tmp, size_t(n) + 1);
    return 0;
}

int ip_mask_to_prefix(uint32_t mask) {
    int prefix = 0;
    while (prefix < 32 && (mask & (0x80000000u >> prefix))) ++prefix;
    uint32_t expected = prefix == 0 ? 0 : ~0u << (32 - prefix);
    return mask == expected ? prefix : -1;
}

int ip_addr_prefix_to_addr_mask(const char *text, uint32_t *addr, uint32_t *mask) {
    if (!text || !addr || !mask) return -1;
    uint32_t a;
    unsigned long prefix;
    if (!parse_quad(text, a) || *text++ != '/' || !read_number(text, 2, prefix) || *text || prefix > 32)
        return -1;
    *addr = a;
    *mask = prefix == 0 ? 0 : ~0u << (32 - prefix);
    return 0;
}

char *strncpy_safe(char *dst, const char *src, size_t size) {
    if (!dst || size == 0) return dst;
    if (!src) src = "";
    size_t n = strnlen(src, size - 1);
    std::memmove(dst, src, n);
    dst[n] = '\0';
    return dst;
}

int parse_time(const char *text, int *hours, int *minutes, int *seconds) {
    if (!text || !hours || !minutes || !seconds) return -1;
    const char *p = text;
    unsigned long h, m, s;
    if (!read_number(p, 2, h) || *p++ != ':' || !read_number(p, 2, m) || *p++ != ':' ||
        !read_number(p, 2, s) || *p != '\0')
        return -1;
    if (h > 23 || m > 59 || s > 59) return -1;
    *hours = int(h);
    *minutes = int(m);
    *seconds = int(s);
    return 0;
}

int run_shell(const char *command) {
    char sh[] = "/bin/sh", dash_c[] = "-c";
    char *cmd = const_cast<char *>(command);
    char *argv[] = {sh, dash_c, cmd, nullptr};
    pid_t pid;
    if (posix_spawn(&pid, "/bin/sh", nullptr, nullptr, argv, environ) != 0) return -1;
    int status;
    while (waitpid(pid, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// The platform log goes to standard error, which snmpd sends to its own log.
void log_line(int level, const char *message) { std::fprintf(stderr, "swsim[%d]: %s\n", level, message); }

}  // namespace swsim::helpers
