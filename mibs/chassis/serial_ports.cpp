// RS-232-MIB: the switch's one serial console port, index 1, at 9600 bit/s
// with 8 data bits, 1 stop bit and no flow control.  The settings are fixed
// in the console's hardware: no platform call reads them, and writes to
// them are refused.  The console reports no signals and has no synchronous
// mode, so those tables stay empty.
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace {

constexpr int32_t kConsole = 1;
constexpr int32_t kSpeed = 9600;
constexpr int32_t kRs232 = 2;          // rs232PortType rs232(2)
constexpr int32_t kNoFlowControl = 1;  // none(1)
constexpr int32_t kDataBits = 8;
constexpr int32_t kOneStopBit = 1;     // one(1)
// The console has no parity, yet the port has always answered 2 (odd in the
// MIB's numbering); managers of this switch know the value as it is.
constexpr int32_t kParity = 2;
constexpr int32_t kAutobaudDisabled = 2;
constexpr int kRefused = -1;

}  // namespace

extern "C" {

int32_t get_rs232Number(void) { return 1; }

// ---- rs232PortTable and rs232AsyncPortTable: the console ---------------------------

int init_index_rs232PortTable(void *(*create)(int32_t)) {
    create(kConsole);
    return 0;
}
int exists_entry_rs232PortTable(int32_t) { return 1; }
int init_index_rs232AsyncPortTable(void *(*create)(int32_t)) {
    create(kConsole);
    return 0;
}
int exists_entry_rs232AsyncPortTable(int32_t) { return 1; }

int32_t get_rs232PortIndex(int32_t) { return kConsole; }
int32_t get_rs232PortType(int32_t) { return kRs232; }
int32_t get_rs232PortInSigNumber(int32_t) { return 0; }
int32_t get_rs232PortOutSigNumber(int32_t) { return 0; }
int32_t get_rs232PortInSpeed(int32_t) { return kSpeed; }
int32_t get_rs232PortOutSpeed(int32_t) { return kSpeed; }
int32_t get_rs232PortInFlowType(int32_t) { return kNoFlowControl; }
int32_t get_rs232PortOutFlowType(int32_t) { return kNoFlowControl; }
int set_rs232PortInSpeed(int32_t, int32_t) { return kRefused; }
int set_rs232PortOutSpeed(int32_t, int32_t) { return kRefused; }
int set_rs232PortInFlowType(int32_t, int32_t) { return kRefused; }
int set_rs232PortOutFlowType(int32_t, int32_t) { return kRefused; }

int32_t get_rs232AsyncPortIndex(int32_t) { return kConsole; }
int32_t get_rs232AsyncPortBits(int32_t) { return kDataBits; }
int32_t get_rs232AsyncPortStopBits(int32_t) { return kOneStopBit; }
int32_t get_rs232AsyncPortParity(int32_t) { return kParity; }
int32_t get_rs232AsyncPortAutobaud(int32_t) { return kAutobaudDisabled; }
uint32_t get_rs232AsyncPortParityErrs(int32_t) { return 0; }
uint32_t get_rs232AsyncPortFramingErrs(int32_t) { return 0; }
uint32_t get_rs232AsyncPortOverrunErrs(int32_t) { return 0; }
int set_rs232AsyncPortBits(int32_t, int32_t) { return kRefused; }
int set_rs232AsyncPortStopBits(int32_t, int32_t) { return kRefused; }
int set_rs232AsyncPortParity(int32_t, int32_t) { return kRefused; }
int set_rs232AsyncPortAutobaud(int32_t, int32_t) { return kRefused; }

// ---- signals and the synchronous port: none ------------------------------------------

#define SA_SIGNAL_TABLE(table, column)                                     \
    int init_index_##table(void *(*)(int32_t, int32_t)) { return 0; }     \
    int exists_entry_##table(int32_t, int32_t) { return 1; }              \
    int32_t get_##column##PortIndex(int32_t, int32_t) { return 0; }       \
    int32_t get_##column##Name(int32_t, int32_t) { return 0; }            \
    int32_t get_##column##State(int32_t, int32_t) { return 0; }           \
    uint32_t get_##column##Changes(int32_t, int32_t) { return 0; }
SA_SIGNAL_TABLE(rs232InSigTable, rs232InSig)
SA_SIGNAL_TABLE(rs232OutSigTable, rs232OutSig)
#undef SA_SIGNAL_TABLE

int init_index_rs232SyncPortTable(void *(*)(int32_t)) { return 0; }
int exists_entry_rs232SyncPortTable(int32_t) { return 1; }
int32_t get_rs232SyncPortIndex(int32_t) { return 0; }
int32_t get_rs232SyncPortClockSource(int32_t) { return 0; }
uint32_t get_rs232SyncPortFrameCheckErrs(int32_t) { return 0; }
uint32_t get_rs232SyncPortTransmitUnderrunErrs(int32_t) { return 0; }
uint32_t get_rs232SyncPortReceiveOverrunErrs(int32_t) { return 0; }
uint32_t get_rs232SyncPortInterruptedFrames(int32_t) { return 0; }
uint32_t get_rs232SyncPortAbortedFrames(int32_t) { return 0; }
int32_t get_rs232SyncPortRole(int32_t) { return 0; }
int32_t get_rs232SyncPortEncoding(int32_t) { return 0; }
int32_t get_rs232SyncPortRTSControl(int32_t) { return 0; }
int32_t get_rs232SyncPortRTSCTSDelay(int32_t) { return 0; }
int32_t get_rs232SyncPortMode(int32_t) { return 0; }
int32_t get_rs232SyncPortIdlePattern(int32_t) { return 0; }
int32_t get_rs232SyncPortMinFlags(int32_t) { return 0; }
// Accepted and ignored: there is nothing synchronous to set.
int set_rs232SyncPortClockSource(int32_t, int32_t) { return 0; }
int set_rs232SyncPortRole(int32_t, int32_t) { return 0; }
int set_rs232SyncPortEncoding(int32_t, int32_t) { return 0; }
int set_rs232SyncPortRTSControl(int32_t, int32_t) { return 0; }
int set_rs232SyncPortRTSCTSDelay(int32_t, int32_t) { return 0; }
int set_rs232SyncPortMode(int32_t, int32_t) { return 0; }
int set_rs232SyncPortIdlePattern(int32_t, int32_t) { return 0; }
int set_rs232SyncPortMinFlags(int32_t, int32_t) { return 0; }

}  // extern "C"
