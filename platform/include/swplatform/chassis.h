/*
 * Chassis, environment and load of the switch stack: the platform calls
 * behind the inventory (ENTITY-MIB), the private chassis, power, fan and
 * alarm tables, the processor and memory monitor and the MAC address table
 * usage.  Part of the platform contract (included from platform.h); the
 * conventions of platform.h hold: units and positions count from zero, a
 * negative result is a failure that leaves out arguments untouched.
 */
#ifndef SWPLATFORM_CHASSIS_H
#define SWPLATFORM_CHASSIS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The stack as a whole ------------------------------------------------ */

#define SW_MAX_PSUS 4          /* power supply bays of a unit */
#define SW_MAX_FANS 8          /* fan positions of a unit */
#define SW_MAX_ALARM_INPUTS 8  /* alarm (dry contact) inputs of a unit */
#define SW_MAX_ALARM_OUTPUTS 4 /* alarm relay outputs of the stack */
#define SW_MODEL_SIZE 32       /* model texts, terminating zero included */

typedef struct sw_chassis_info {
    uint32_t model;         /* the platform's chassis model code */
    uint32_t slots;         /* unit positions of the stack, 1 .. SW_MAX_UNITS */
    uint32_t psu_bays;      /* power supply bays of every unit, 0 .. SW_MAX_PSUS */
    uint32_t fans;          /* fan positions of every unit, 0 .. SW_MAX_FANS */
    uint32_t alarm_inputs;  /* alarm inputs of every unit, 0 .. SW_MAX_ALARM_INPUTS */
    uint32_t alarm_outputs; /* alarm outputs of the stack, 0 .. SW_MAX_ALARM_OUTPUTS */
    uint32_t agent_address; /* IPv4 address the SNMP agent is reached at, host order */
    uint32_t agent_port;    /* UDP port the SNMP agent is reached at */
} sw_chassis_info_t;

int cfg_chassis_get_info(sw_chassis_info_t *info);

/* ---- Field-replaceable modules of a unit --------------------------------
 * A power supply in one of a unit's bays, or a fan module in one of its fan
 * positions.  The call fails for a unit that is not present or a position
 * the unit does not have.
 */
#define SW_MODULE_ABSENT 0 /* the bay or position is empty */
#define SW_MODULE_OK 1
#define SW_MODULE_FAILED 2 /* fitted but not working: no output, fan stopped */

typedef struct sw_module_status {
    uint32_t state;            /* SW_MODULE_* */
    char model[SW_MODEL_SIZE]; /* empty while absent */
} sw_module_status_t;

int cfg_chassis_get_psu(int unit0, int bay0, sw_module_status_t *psu);
int cfg_chassis_get_fan(int unit0, int fan0, sw_module_status_t *fan);

/* ---- Alarms ----------------------------------------------------------------
 * *raised is non-zero while an alarm input of a present unit is raised;
 * *active non-zero while an alarm output of the stack is energised.
 */
int cfg_chassis_get_alarm_input(int unit0, int input0, int *raised);
int cfg_chassis_get_alarm_output(int output0, int *active);

/* ---- Management processors and sensors ------------------------------------ */

#define SW_MPU_NONE 0    /* not a management processor unit, or not present */
#define SW_MPU_ACTIVE 1  /* runs the stack */
#define SW_MPU_STANDBY 2 /* takes over when the active one goes */
int cfg_chassis_get_mpu_role(int unit0); /* SW_MPU_*, negative for a unit out of range */
/* Temperature inside a present unit, whole degrees Celsius. */
int cfg_chassis_get_temperature(int unit0, int *celsius);

/* ---- Processor and memory monitor ----------------------------------------
 * Load of a unit's processor and use of its memory, in percent.  selector
 * SW_CPUMON_ACTIVE asks for the unit's own (active) processor; with
 * SW_CPUMON_STANDBY the call answers for the stack's standby management
 * processor, and fails while there is none.
 */
#define SW_CPUMON_ACTIVE 0
#define SW_CPUMON_STANDBY 1
int cfg_cpumon_get_cpu_info(int unit0, int selector, uint32_t *percent);
int cfg_cpumon_get_cpu_mem_info(int unit0, int selector, uint32_t *percent);

/* ---- MAC address table usage -----------------------------------------------
 * Counts the entries of one unit's MAC address table into *result.  The
 * request is SW_MAC_SUMMARY_WORDS 32-bit words (records_chassis.hpp gives
 * their values).  Counting a unit's table is slow: the call takes time in
 * proportion to the stack's tables.
 */
#define SW_MAC_SUMMARY_WORDS 7
int cfg_get_mac_address_table_summary(uint32_t *result, const int32_t request[SW_MAC_SUMMARY_WORDS]);

#ifdef __cplusplus
}
#endif

#endif
