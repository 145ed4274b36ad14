// The platform's small helpers: address text, bounded copies, shell commands,
// logging and time-of-day parsing.  They need no switch state.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace swsim::helpers {

int ip_str_to_uint32(const char *text, uint32_t *addr);
int ip_uint32_to_str(uint32_t addr, char *buf, size_t size);
int ip_mask_to_prefix(uint32_t mask);
int ip_addr_prefix_to_addr_mask(const char *text, uint32_t *addr, uint32_t *mask);
char *strncpy_safe(char *dst, const char *src, size_t size);
int parse_time(const char *text, int *hours, int *minutes, int *seconds);
// Runs a command line through /bin/sh; its exit status, or -1.
int run_shell(const char *command);
void log_line(int level, const char *message);

}  // namespace swsim::helpers
