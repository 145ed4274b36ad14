// Debug output through the agent's debug tokens, printed only while the
// agent's debugging is on.  A traced step prints a position line under the
// token "trace" (function, source file, line), then its message under the
// group's own token: "scalars" for scalar handlers, the table's name for a
// table.  Only the net-snmp edge includes this header.
#pragma once

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>

// Message under `token`, preceded by the position line of function `fn` in
// source `file`.  Generic handlers name the object's own handler as `fn`.
#define SA_TRACE_AT(fn, file, token, ...)                                       \
    do {                                                                        \
        if (snmp_get_do_debugging()) {                                          \
            DEBUGMSGT(("trace", "%s(): %s, %d:\n", fn, file, __LINE__));       \
            DEBUGMSGT((token, __VA_ARGS__));                                    \
        }                                                                       \
    } while (0)
#define SA_TRACE(token, ...) SA_TRACE_AT(__func__, __FILE_NAME__, token, __VA_ARGS__)

// Message under `token` alone.
#define SA_DEBUG(token, ...)                          \
    do {                                              \
        if (snmp_get_do_debugging()) {                \
            DEBUGMSGT((token, __VA_ARGS__));          \
        }                                             \
    } while (0)
