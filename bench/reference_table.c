/*
 * Reference tables for bench/run.sh: the cheapest tables that net-snmp's
 * table-data helper serves.  Their rows and values are made once, at
 * registration; a request only points the varbind at a stored value.
 * Walking one next to a table of libsnmpdAPI with the same rows, columns and
 * value types and sizes, in the same agent, shows what the module's
 * per-request work (row refresh, row checks, platform reads, locking) costs
 * on top of the helper, the agent and the client.
 *
 * Loaded with "dlmod reference_table /path/libreference_table.so".
 *   REFTABLES  the tables' shapes, separated by spaces: ROWS "x" INDEXES ":"
 *              the columns' types separated by "/" (default "640x1:i/i/i/i/
 *              i/i/i/i/i/i", 8 units x 64 ports + 128 trunks, one index, ten
 *              integers).
 *              Types: i INTEGER, c Counter32, g Gauge32, t TimeTicks,
 *              C Counter64, o an OBJECT IDENTIFIER (0.0), sN N printable
 *              octets, hN N octets of binary data.  Table k (from 1) is
 *              registered under 1.3.6.1.4.1.99999.999.k with INDEXES
 *              INTEGER indexes (at most 16), row r having r in each, and its
 *              columns from 2 (at most 32).
 */
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define REF_FIRST_COLUMN 2
#define REF_MAX_COLUMNS 32
#define REF_MAX_OCTETS 65535
#define REF_MAX_INDEXES 16

/* A column's type and, for every row, its value. */
typedef struct reference_column {
    u_char type;
    size_t length;  /* of `bytes`, for octet strings */
    u_char *bytes;  /* the octet string or object identifier every row answers */
} reference_column;

typedef struct reference_table {
    int indexes;
    int columns;
    reference_column column[REF_MAX_COLUMNS];
} reference_table;

typedef struct reference_row {
    long index;
    long number;              /* the value of integer columns */
    struct counter64 number64; /* of Counter64 columns */
} reference_row;

static const oid zero_dot_zero[] = {0, 0};

void init_reference_table(void);

static int reference_handler(netsnmp_mib_handler *handler, netsnmp_handler_registration *reginfo,
                             netsnmp_agent_request_info *reqinfo, netsnmp_request_info *requests) {
    const reference_table *table = (const reference_table *)handler->myvoid;
    netsnmp_request_info *r;
    (void)reginfo;
    if (reqinfo->mode != MODE_GET) return SNMP_ERR_NOERROR;
    for (r = requests; r; r = r->next) {
        reference_row *row = (reference_row *)netsnmp_extract_table_row_data(r);
        netsnmp_table_request_info *info = netsnmp_extract_table_info(r);
        const reference_column *c;
        int column;
        if (!row || !info) continue;
        column = (int)info->colnum - REF_FIRST_COLUMN;
        if (column < 0 || column >= table->columns) continue;
        c = &table->column[column];
        switch (c->type) {
        case ASN_OCTET_STR:
            snmp_set_var_typed_value(r->requestvb, c->type, c->bytes, c->length);
            break;
        case ASN_OBJECT_ID:
            snmp_set_var_typed_value(r->requestvb, c->type, zero_dot_zero, sizeof zero_dot_zero);
            break;
        case ASN_COUNTER64:
            snmp_set_var_typed_value(r->requestvb, c->type, &row->number64, sizeof row->number64);
            break;
        default:
            snmp_set_var_typed_value(r->requestvb, c->type, &row->number, sizeof row->number);
        }
    }
    return SNMP_ERR_NOERROR;
}

/* Reads one column type at *text ("i", "h256", ...); 0 when it is not one. */
static int parse_column(const char **text, reference_column *c) {
    const char *t = *text;
    char *end;
    long n;
    switch (*t++) {
    case 'i': c->type = ASN_INTEGER; break;
    case 'c': c->type = ASN_COUNTER; break;
    case 'g': c->type = ASN_GAUGE; break;
    case 't': c->type = ASN_TIMETICKS; break;
    case 'C': c->type = ASN_COUNTER64; break;
    case 'o': c->type = ASN_OBJECT_ID; break;
    case 's':
    case 'h':
        n = strtol(t, &end, 10);
        if (end == t || n < 0 || n > REF_MAX_OCTETS) return 0;
        c->bytes = malloc((size_t)n + 1);
        if (!c->bytes) return 0;
        c->type = ASN_OCTET_STR;
        c->length = (size_t)n;
        for (size_t k = 0; k < c->length; ++k)
            c->bytes[k] = t[-1] == 's' ? (u_char)('a' + k % 26) : (u_char)(k * 37 % 256);
        t = end;
        break;
    default: return 0;
    }
    *text = t;
    return 1;
}

static void free_table(reference_table *table) {
    for (int c = 0; c < REF_MAX_COLUMNS; ++c) free(table->column[c].bytes);
    free(table);
}

/* Registers table `number` with `rows` rows of the columns in `table`. */
static void register_reference(unsigned number, long rows, reference_table *table) {
    oid table_oid[] = {1, 3, 6, 1, 4, 1, 99999, 999, number};
    char name[32];
    netsnmp_handler_registration *reg;
    netsnmp_table_registration_info *info;
    netsnmp_table_data *data;
    long i;

    snprintf(name, sizeof name, "referenceTable%u", number);
    reg = netsnmp_create_handler_registration(name, reference_handler, table_oid, OID_LENGTH(table_oid),
                                              HANDLER_CAN_RONLY);
    info = SNMP_MALLOC_TYPEDEF(netsnmp_table_registration_info);
    data = netsnmp_create_table_data(name);
    if (!reg || !info || !data) {
        snmp_log(LOG_ERR, "reference_table: out of memory\n");
        return;
    }
    reg->handler->myvoid = table;
    for (int k = 0; k < table->indexes; ++k) netsnmp_table_helper_add_indexes(info, ASN_INTEGER, 0);
    info->min_column = REF_FIRST_COLUMN;
    info->max_column = REF_FIRST_COLUMN + table->columns - 1;
    netsnmp_register_table_data(reg, data, info);

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
        entry->number = (i * 31) % 1000;
        entry->number64.low = (u_long)(i * 7919);
        row->data = entry;
        for (int k = 0; k < table->indexes; ++k)
            netsnmp_table_row_add_index(row, ASN_INTEGER, &entry->index, sizeof entry->index);
        if (netsnmp_table_data_add_row(data, row) != SNMPERR_SUCCESS) {
            netsnmp_table_data_delete_row(row);
            free(entry);
        }
    }
    snmp_log(LOG_INFO, "reference_table: %s, %ld rows of %d columns\n", name, rows, table->columns);
}

void init_reference_table(void) {
    const char *shapes = getenv("REFTABLES");
    unsigned number = 0;
    if (!shapes || !*shapes) shapes = "640x1:i/i/i/i/i/i/i/i/i/i";
    while (*shapes) {
        reference_table *table;
        char *end;
        long rows, indexes;
        if (*shapes == ' ') {
            ++shapes;
            continue;
        }
        rows = strtol(shapes, &end, 10);
        if (*end != 'x' || rows < 1 || rows > 1000000) break;
        indexes = strtol(end + 1, &end, 10);
        if (*end != ':' || indexes < 1 || indexes > REF_MAX_INDEXES) break;
        table = SNMP_MALLOC_TYPEDEF(reference_table);
        if (!table) break;
        table->indexes = (int)indexes;
        shapes = end;
        do {
            ++shapes;  /* the ':' or '/' before the column */
            if (table->columns == REF_MAX_COLUMNS || !parse_column(&shapes, &table->column[table->columns])) break;
            ++table->columns;
        } while (*shapes == '/');
        if (*shapes && *shapes != ' ') {
            free_table(table);
            break;
        }
        register_reference(++number, rows, table);
    }
    if (*shapes) snmp_log(LOG_ERR, "reference_table: REFTABLES: cannot read \"%s\"\n", shapes);
}
