/*
 * Port authentication of the switch: the 802.1X authenticator (and the
 * supplicant side, which the switch's ports never run) and the RADIUS client
 * that the authenticator asks.  Part of the platform contract (included from
 * platform.h); the conventions of platform.h hold (negative result =
 * failure, out arguments untouched on failure).  Ports are (unit0, port0)
 * as everywhere; trunks have no port authentication.
 *
 * Numbers that the IEEE 802.1X PAE MIB and the RADIUS client MIB name are
 * the MIB's own: states, directions, port controls and termination causes
 * travel as the MIB enumerates them.
 */
#ifndef SWPLATFORM_AUTH_H
#define SWPLATFORM_AUTH_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- 802.1X ---------------------------------------------------------------*/
/* Port authentication of the whole switch: 1 on, 0 off.  While it is off
 * every port forwards as if authorized. */
int cfg_get_dot1x_enable(void);
int cfg_set_dot1x_enable(int on);

/* The settings of a port, by number.  Each setter refuses a value outside
 * the range given here. */
enum {
    SW_DOT1X_ADMIN_DIRECTIONS = 0, /* 0 both, 1 in */
    SW_DOT1X_PORT_CONTROL,         /* 1 force unauthorized, 2 auto, 3 force authorized */
    SW_DOT1X_QUIET_PERIOD,         /* seconds, 0 .. 65535 */
    SW_DOT1X_TX_PERIOD,            /* seconds, 1 .. 65535 */
    SW_DOT1X_SUPP_TIMEOUT,         /* seconds, 1 .. 65535 */
    SW_DOT1X_SERVER_TIMEOUT,       /* seconds, 1 .. 65535 */
    SW_DOT1X_MAX_REQ,              /* requests, 1 .. 10 */
    SW_DOT1X_REAUTH_PERIOD,        /* seconds, 1 .. 4294967295 */
    SW_DOT1X_REAUTH_ENABLED,       /* 1 on, 0 off */
    SW_DOT1X_KEY_TX_ENABLED,       /* 1 on, 0 off */
    SW_DOT1X_SUPP_HELD_PERIOD,     /* supplicant, seconds, 0 .. 65535 */
    SW_DOT1X_SUPP_AUTH_PERIOD,     /* supplicant, seconds, 1 .. 65535 */
    SW_DOT1X_SUPP_START_PERIOD,    /* supplicant, seconds, 1 .. 65535 */
    SW_DOT1X_SUPP_MAX_START,       /* supplicant, starts, 1 .. 65535 */
    SW_DOT1X_SUPP_ACCESS_CTRL,     /* supplicant access control with the authenticator: 1 active, 0 inactive */
    SW_DOT1X_PARAMS
};
int cfg_get_dot1x_port_param(int unit0, int port0, int param, uint32_t *value);
int cfg_set_dot1x_port_param(int unit0, int port0, int param, uint32_t value);

/* Restarts the port's authenticator: a session on it ends (cause 6, port
 * re-initialised) and the port waits for its supplicant again. */
int cfg_dot1x_port_initialize(int unit0, int port0);
/* Authenticates the supplicant of an authorized port again (a RADIUS
 * request goes out); fails while no supplicant is authenticated. */
int cfg_dot1x_port_reauthenticate(int unit0, int port0);

/* Counters of the authenticator's EAPOL frames, in the order of the MIB's
 * dot1xAuthStatsTable (columns 1 .. 10). */
#define SW_DOT1X_AUTH_COUNTERS 10
/* Counters of the authenticator's state machines, in the order of the MIB's
 * dot1xAuthDiagTable (columns 1 .. 18). */
#define SW_DOT1X_DIAG_COUNTERS 18
/* Counters of the supplicant's EAPOL frames, in the order of the MIB's
 * dot1xSuppStatsTable (columns 1 .. 10). */
#define SW_DOT1X_SUPP_COUNTERS 10
#define SW_DOT1X_USER_SIZE 64        /* user name, terminating zero included */
#define SW_DOT1X_NOT_TERMINATED 999  /* termination cause of a running session */

/* What a port's authenticator is doing. */
typedef struct {
    uint32_t pae_state;        /* 1 initialize .. 10 restart (MIB dot1xAuthPaeState) */
    uint32_t backend_state;    /* 1 request .. 8 ignore (MIB dot1xAuthBackendAuthState) */
    uint32_t oper_directions;  /* 0 both, 1 in */
    uint32_t authorized;       /* 1 the controlled port forwards, 0 not */
    uint32_t auth_counters[SW_DOT1X_AUTH_COUNTERS];
    uint32_t last_eapol_version;      /* of the last EAPOL frame received, 0 none */
    uint8_t last_eapol_source[6];     /* its source address */
    uint8_t reserved[2];
    uint32_t diag_counters[SW_DOT1X_DIAG_COUNTERS];
    /* The current session, or the last one once it ended. */
    uint32_t session_number;   /* sessions of the port so far, 0 none yet */
    uint32_t session_method;   /* 1 RADIUS server, 2 local */
    uint32_t session_time_cs;  /* how long it ran or runs, hundredths of a second */
    uint32_t terminate_cause;  /* MIB dot1xAuthSessionTerminateCause */
    char session_user[SW_DOT1X_USER_SIZE];
    uint64_t session_octets_rx, session_octets_tx;
    uint32_t session_frames_rx, session_frames_tx;
    /* The supplicant side (ports never run one: it stays disconnected). */
    uint32_t supp_pae_state;       /* 1 disconnected .. 10 (MIB dot1xSuppPaeState) */
    uint32_t supp_backend_state;   /* 1 initialize .. 8 timeout (MIB dot1xSuppBackendState) */
    uint32_t supp_authorized;      /* 1 authorized, 0 not */
    uint32_t supp_counters[SW_DOT1X_SUPP_COUNTERS];
    uint32_t supp_last_eapol_version;
    uint8_t supp_last_eapol_source[6];
    uint8_t reserved2[2];
} sw_dot1x_port_t;
int status_dot1x_port(int unit0, int port0, sw_dot1x_port_t *out);

/* ---- RADIUS client ----------------------------------------------------------
 * Up to SW_RADIUS_SERVERS servers, slots 0 .. SW_RADIUS_SERVERS - 1, asked
 * in slot order: a request goes to the first server in use that answers.
 * A server gets the default port, key, retransmissions and timeout when it
 * is added; each can be changed afterwards.
 */
#define SW_RADIUS_SERVERS 5
#define SW_RADIUS_KEY_SIZE 65 /* a shared secret of up to 64 bytes and its zero */

/* The defaults: port 1 .. 65535, retransmissions 1 .. 30, timeout in
 * seconds 1 .. 65535, the key as text. */
int cfg_get_radius_port(void);
int cfg_set_radius_port(int port);
int cfg_get_radius_retransmit(void);
int cfg_set_radius_retransmit(int count);
int cfg_get_radius_timeout(void);
int cfg_set_radius_timeout(int seconds);
int cfg_get_radius_key(char *buf, size_t size);
int cfg_set_radius_key(const char *key); /* refuses a key longer than 64 bytes */

typedef struct {
    uint32_t in_use;      /* 1 the slot holds a server */
    uint32_t address;     /* IPv4, host order */
    uint32_t port, retransmit, timeout;
    char key[SW_RADIUS_KEY_SIZE];
    uint8_t reserved[3];
} sw_radius_server_t;
/* A slot's server; a free slot answers in_use 0. */
int cfg_get_radius_server(int slot, sw_radius_server_t *out);
/* Adds the server at address to a free slot with the defaults, or moves the
 * slot's server to address; refuses 0.0.0.0, multicast and reserved
 * addresses and an address another slot holds. */
int cfg_set_radius_server_address(int slot, uint32_t address);
/* The setters of a server in use; the ranges of the defaults hold. */
int cfg_set_radius_server_port(int slot, int port);
int cfg_set_radius_server_retransmit(int slot, int count);
int cfg_set_radius_server_timeout(int slot, int seconds);
int cfg_set_radius_server_key(int slot, const char *key);
/* Frees the slot; fails when it is free. */
int cfg_del_radius_server(int slot);

/* What the client counted for a server slot, since the server was added. */
typedef struct {
    uint32_t round_trip_cs;  /* of the last answer, hundredths of a second */
    uint32_t access_requests, access_retransmissions, access_accepts, access_rejects, access_challenges;
    uint32_t malformed_responses, bad_authenticators, pending_requests, timeouts, unknown_types,
        packets_dropped;
    uint32_t reachable;      /* 1 the server answered the last request, 0 not */
} sw_radius_counters_t;
int status_radius_server(int slot, sw_radius_counters_t *out);

#ifdef __cplusplus
}
#endif

#endif
