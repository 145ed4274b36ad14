/*
 * The switch's file store and what moves files in and out of it: firmware
 * images and configuration files in flash, the start-up choice of each, TFTP
 * transfers between the store and a TFTP server, and restarts.  Part of the
 * platform contract (included from platform.h); the conventions of
 * platform.h hold (negative result = failure, out arguments untouched on
 * failure).
 *
 * The store holds SW_FIRMWARE_SLOTS firmware images and SW_CONFIG_SLOTS
 * configuration files, slots counted from 0.  The switch starts from one
 * image and one configuration file, its start-up files; a start-up file
 * cannot be deleted.
 */
#ifndef SWPLATFORM_FILES_H
#define SWPLATFORM_FILES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { SW_FILE_FIRMWARE = 1, SW_FILE_CONFIG = 2 };
#define SW_FIRMWARE_SLOTS 2
#define SW_CONFIG_SLOTS 4
#define SW_FILE_NAME_SIZE 64           /* name, terminating zero included */
#define SW_FIRMWARE_MAX_BYTES 262144   /* the largest image the store takes */
#define SW_CONFIG_MAX_BYTES 65536      /* the largest configuration file */

typedef struct {
    uint32_t in_use;    /* 1 the slot holds a file */
    uint32_t startup;   /* 1 the switch starts from it */
    uint32_t size;      /* bytes */
    uint32_t crc32;     /* CRC-32 (IEEE 802.3) of its bytes */
    int64_t created;    /* when it was written: seconds since 1970 on the switch clock */
    char name[SW_FILE_NAME_SIZE];
} sw_file_info_t;

/* A slot of kind SW_FILE_FIRMWARE or SW_FILE_CONFIG; a free slot answers
 * in_use 0.  Fails for a kind or slot out of range. */
int flash_get_file_info(int kind, int slot, sw_file_info_t *out);
/* Makes the file the start-up one of its kind; fails for a free slot. */
int flash_set_startup(int kind, int slot);
/* Deletes a file; fails for a free slot and for a start-up file. */
int flash_delete_file(int kind, int slot);

/* ---- TFTP ------------------------------------------------------------------
 * A transfer moves one file between the store and the TFTP server
 * (RFC 1350, octet mode): a download writes the file the server gives into
 * the store, an upload sends a stored file to the server.  Firmware is
 * downloaded into the image slot the switch does not start from and
 * uploaded from the start-up image; configuration files use the
 * configuration slot chosen by cfg_set_tftp_config_slot.  The stored file
 * takes the transfer's file name.
 *
 * flash_tftp_start returns at once; the transfer runs on its own and its
 * outcome is read with flash_tftp_state.  A server that does not answer
 * fails the transfer within seconds.
 */
enum {
    SW_TFTP_DOWNLOAD_FIRMWARE = 1,
    SW_TFTP_DOWNLOAD_CONFIG,
    SW_TFTP_UPLOAD_FIRMWARE,
    SW_TFTP_UPLOAD_CONFIG
};
enum { SW_TFTP_IDLE = 0, SW_TFTP_RUNNING, SW_TFTP_DONE, SW_TFTP_FAILED };
/* The server's IPv4 address, host order; 0 none. */
int cfg_get_tftp_server(uint32_t *addr);
int cfg_set_tftp_server(uint32_t addr);
/* The file name on the server (text of up to SW_FILE_NAME_SIZE - 1 bytes,
 * no '/' at its start, no ".." part). */
int cfg_get_tftp_file(char *buf, size_t size);
int cfg_set_tftp_file(const char *name);
/* The configuration slot of configuration transfers, 0 .. SW_CONFIG_SLOTS - 1. */
int cfg_get_tftp_config_slot(void);
int cfg_set_tftp_config_slot(int slot);
/* Starts a transfer (SW_TFTP_DOWNLOAD_* or SW_TFTP_UPLOAD_*); fails while
 * one runs, without a server or file name, and for an upload of a free
 * slot. */
int flash_tftp_start(int action);
/* SW_TFTP_IDLE before the first transfer, else the state of the last one;
 * *action (may be NULL) receives what it does or did. */
int flash_tftp_state(int *action);
/* Forgets the last transfer's outcome (back to SW_TFTP_IDLE); fails while
 * one runs. */
int flash_tftp_clear(void);

/* ---- Restart -----------------------------------------------------------------
 * kind SW_RESTART_WARM restarts the switch's software, SW_RESTART_COLD the
 * whole switch; either way the switch starts again from its start-up files
 * and its uptime starts from zero.  SW_RESTART_FACTORY first puts the
 * factory configuration into the start-up configuration file (in place of
 * what it held), then restarts the whole switch.
 */
enum { SW_RESTART_WARM = 1, SW_RESTART_COLD = 2, SW_RESTART_FACTORY = 3 };
int cfg_restart(int kind);

#ifdef __cplusplus
}
#endif

#endif
