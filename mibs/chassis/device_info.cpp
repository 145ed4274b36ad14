// genDvInfDeviceTable: the switch as one device, in one row (1, 1): its
// product identifier, boot loader version, serial number, firmware release
// date and vendor code, from the platform's status block; the other columns
// are fixed.
#include <cstdio>
#include <cstring>
#include <ctime>

#include "tables/catalogue.hpp"
#include "swplatform/platform.h"

namespace {

constexpr int32_t kDevice = 1;

// Model words that are themselves vendor codes: 1, 2, 7, 9 and 15.
constexpr uint32_t kVendorModels = 0x8286;
constexpr int32_t kOtherVendor = 2000000254;

const sw_status_t *status() { return get_status(); }

}  // namespace

extern "C" {

int init_index_genDvInfDeviceTable(void *(*create)(int32_t, int32_t)) {
    create(kDevice, kDevice);
    return 0;
}
int exists_entry_genDvInfDeviceTable(int32_t, int32_t) { return 1; }

int32_t get_genDvInfDeviceDevNo(int32_t, int32_t) { return kDevice; }
int32_t get_genDvInfDeviceDevLocalId(int32_t, int32_t) { return kDevice; }

// The equipment OID, as sysObjectID answers it.
const uint32_t *get_genDvInfDeviceProduct(int32_t, int32_t, size_t *len) {
    static uint32_t oid[128];
    size_t bytes = 0;
    const uint32_t *equipment = cfg_equip_get_int_oid(&bytes);
    if (equipment == nullptr || bytes > sizeof oid) bytes = 0;
    if (bytes != 0) std::memcpy(oid, equipment, bytes);
    *len = bytes;
    return oid;
}

// Columns the switch has no value for.
const uint8_t *get_genDvInfDeviceFirmVersion(int32_t, int32_t, size_t *len) {
    *len = 0;
    return nullptr;
}
const uint8_t *get_genDvInfDeviceHWVersion(int32_t, int32_t, size_t *len) {
    *len = 0;
    return nullptr;
}
const uint8_t *get_genDvInfDeviceE2PROMversion(int32_t, int32_t, size_t *len) {
    *len = 0;
    return nullptr;
}

const uint8_t *get_genDvInfDeviceBootVersion(int32_t, int32_t, size_t *len) {
    static char text[32];
    const sw_status_t *st = status();
    strncpy_safe(text, st != nullptr ? st->boot_version : "", sizeof text);
    *len = std::strlen(text);
    return reinterpret_cast<const uint8_t *>(text);
}

// Decimal, in 16 bytes: a serial number of more than 15 digits reads as its
// first 15.
const uint8_t *get_genDvInfDeviceSerialNo(int32_t, int32_t, size_t *len) {
    static char text[16];
    const sw_status_t *st = status();
    std::snprintf(text, sizeof text, "%llu", st != nullptr ? static_cast<unsigned long long>(st->serial_no) : 0ULL);
    *len = std::strlen(text);
    return reinterpret_cast<const uint8_t *>(text);
}

int32_t get_genDvInfDeviceIdent(int32_t, int32_t) { return 0; }
int set_genDvInfDeviceIdent(int32_t, int32_t, int32_t) { return 0; }

// The firmware's build date ("Tue Mar 02 14:05:00 UTC 2021") as
// yymmddhhmm ("2103021405"); no value when the text is not such a date.
const uint8_t *get_genDvInfDeviceFirmReleaseDate(int32_t, int32_t, size_t *len) {
    static char text[11];
    *len = 0;
    const sw_status_t *st = status();
    if (st == nullptr) return nullptr;
    char date[sizeof st->fw_date + 1];
    strncpy_safe(date, st->fw_date, sizeof date);
    struct tm when {};
    if (strptime(date, "%a %b %d %T UTC %Y", &when) == nullptr) return nullptr;
    if (std::strftime(text, sizeof text, "%y%m%d%H%M", &when) != 10) return nullptr;
    *len = 10;
    return reinterpret_cast<const uint8_t *>(text);
}

int32_t get_genDvInfDeviceVendor(int32_t, int32_t) {
    const sw_status_t *st = status();
    const uint32_t w = st != nullptr ? st->model_word : 0;
    return w <= 15 && ((kVendorModels >> w) & 1u) != 0 ? static_cast<int32_t>(w) : kOtherVendor;
}

}  // extern "C"
