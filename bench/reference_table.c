/*
 * A reference table for bench/run.sh: the cheapest table that net-snmp's
 * table-data helper serves.  Its rows and values are made once, at
 * registration; a request only copies a stored integer into the varbind.
 * Walking it next to portTable, in the same agent, shows what libsnmpdAPI's
 * per-request work (row refresh, row checks, platform reads, locking) costs
 * on top of the helper itself.
 *
 * Loaded with "dlmod reference_table /path/libreference_table.so".
 * Registered under 1.3.6.1.4.1.99999.999.1, one INTEGER index 1..ROWS,
 * INTEGER columns 2..COLUMNS+1 (portTable's layout):
 *   REFTABLE_ROWS     row count (default 640: 8 units x 64 ports + 128 trunks)
 *   REFTABLE_COLUMNS  column count (default 10, at most 32)
 */
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>

#include <stdlib.h>

#define REF_FIRST_COLUMN 2
#define REF_MAX_COLUMNS 32

typedef struct reference_row {
    long index;
    long values[REF_MAX_COLUMNS];
} reference_row;

static const oid reference_oid[] = {1, 3, 6, 1, 4, 1, 99999, 999, 1};
static int reference_columns;

void init_reference_table(void);

static long env_number(const char *name, long fallback, long lo, long hi) {
    const char *text = getenv(name);
    long v = text && *text ? strtol(text, NULL, 10) : fallback;
    return v < lo || v > hi ? fallback : v;
}

static int reference_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                             netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) {
    netsnmp_request_info *r;
    (void)handler;
    (void)reginfo;
    if (reqinfo->mode != MODE_GET) return SNMP_ERR_NOERROR;
    for (r = requests; r; r = r->next) {
        reference_row *row = (reference_row *)netsnmp_extract_table_row_data(r);
        netsnmp_table_request_info *info = netsnmp_extract_table_info(r);
        int column;
        if (!row || !info) continue;
        column = (int)info->colnum - REF_FIRST_COLUMN;
        if (column < 0 || column >= reference_columns) continue;
        snmp_set_var_typed_value(r->requestvb, ASN_INTEGER, &row->values[column], sizeof(long));
    }
    return SNMP_ERR_NOERROR;
}

void init_reference_table(void) {
    const long rows = env_number("REFTABLE_ROWS", 640, 1, 1000000);
    netsnmp_handler_registration *reg;
    netsnmp_table_registration_info *info;
    netsnmp_table_data *table;
    long i;
    int c;

    reference_columns = (int)env_number("REFTABLE_COLUMNS", 10, 1, REF_MAX_COLUMNS);
    reg = netsnmp_create_handler_registration("referenceTable", reference_handler, reference_oid,
                                              OID_LENGTH(reference_oid), HANDLER_CAN_RONLY);
    info = SNMP_MALLOC_TYPEDEF(netsnmp_table_registration_info);
    table = netsnmp_create_table_data("referenceTable");
    if (!reg || !info || !table) {
        snmp_log(LOG_ERR, "reference_table: out of memory\n");
        return;
    }
    netsnmp_table_helper_add_indexes(info, ASN_INTEGER, 0);
    info->min_column = REF_FIRST_COLUMN;
    info->max_column = REF_FIRST_COLUMN + reference_columns - 1;
    netsnmp_register_table_data(reg, table, info);

    /* Rows in ascending order, so that each one is appended. */
    for (i = 1; i <= rows; ++i) {
        reference_row *entry = SNMP_MALLOC_TYPEDEF(reference_row);
        netsnmp_table_row *row = netsnmp_create_table_data_row();
        if (!entry || !row) {
            free(entry);
            if (row) netsnmp_table_data_delete_row(row);
            snmp_log(LOG_ERR, "reference_table: out of memory at row %ld\n", i);
            return;
        }
        entry->index = i;
        for (c = 0; c < reference_columns; ++c) entry->values[c] = (i * 31 + c) % 1000;
        row->data = entry;
        netsnmp_table_row_add_index(row, ASN_INTEGER, &entry->index, sizeof entry->index);
        if (netsnmp_table_data_add_row(table, row) != SNMPERR_SUCCESS) {
            netsnmp_table_data_delete_row(row);
            free(entry);
        }
    }
    snmp_log(LOG_INFO, "reference_table: %ld rows of %d columns\n", rows, reference_columns);
}
