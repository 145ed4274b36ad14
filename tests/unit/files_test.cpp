// The file store, TFTP and restarts: the action and status mappings of
// tftpAction and restartControl, the start-up choices, the file table's
// index rules and writers, a transfer to a server that never answers (a
// failed action, not a hang) and a restart recorded once.
#include <netinet/in.h>
#include <sys/socket.h>

#include <chrono>
#include <cstring>
#include <functional>
#include <thread>

#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

extern "C" void fileInfoTable_removeEntry(int32_t kind, int32_t index) {
    unit::rows().removed.push_back("fileInfoTable " + std::to_string(kind) + "." + std::to_string(index));
}

namespace unit {
namespace {

using Calls = std::vector<std::string>;

// A loopback UDP port that nobody listens on (bound, then let go).
int silent_port() {
    const int fd = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(fd, reinterpret_cast<sockaddr *>(&a), sizeof a);
    socklen_t len = sizeof a;
    ::getsockname(fd, reinterpret_cast<sockaddr *>(&a), &len);
    ::close(fd);
    return ntohs(a.sin_port);
}

class FilesTest : public SwitchTest {
protected:
    std::string scenario() const override {
        return R"({"files": {"tftp_server": "127.0.0.1", "tftp_file": "sw.cfg",
                             "configs": [{"name": "lab-config", "text": "hostname lab\n"}]}})";
    }
    // tftpAction once it is no longer inProgress (or after ten seconds).
    int32_t settled_action() {
        const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        int32_t action = get_tftpAction();
        while (action == 6 && std::chrono::steady_clock::now() < until) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            action = get_tftpAction();
        }
        return action;
    }
};

TEST_F(FilesTest, ActionWritersMapToThePlatform) {
    const struct {
        const char *object;
        int (*set)(int32_t);
        int32_t value;
        Calls calls;
    } cases[] = {
        // tftpAction: transfers 2..5 start, none(1) forgets, states are refused.
        {"tftpAction", set_tftpAction, 1, {"flash_tftp_clear()"}},
        {"tftpAction", set_tftpAction, 6, {}},
        {"tftpAction", set_tftpAction, 7, {}},
        {"tftpAction", set_tftpAction, 8, {}},
        {"tftpAction", set_tftpAction, 0, {}},
        // restartControl: none(1) does nothing, warm(2) and cold(3) restart.
        {"restartControl", set_restartControl, 1, {}},
        {"restartControl", set_restartControl, 4, {}},
        // Start-up choices count files from one.
        {"restartFirmware", set_restartFirmware, 1, {"flash_set_startup(1,0)"}},
        {"restartConfig", set_restartConfig, 2, {"flash_set_startup(2,1)"}},
        {"restartConfig", set_restartConfig, 0, {}},
        {"tftpFlashConfig", set_tftpFlashConfig, 4, {"cfg_set_tftp_config_slot(3)"}},
    };
    for (const auto &c : cases) {
        int result = 0;
        EXPECT_EQ(call_texts([&] { result = c.set(c.value); }), c.calls) << c.object << " " << c.value;
        if (c.calls.empty()) {
            EXPECT_EQ(result, c.value == 1 ? 0 : -1) << c.object << " " << c.value;
        }
    }
    // Each transfer value starts its own transfer.
    sw().fault_set("flash_tftp_start", -1, -1);
    for (int32_t value = 2; value <= 5; ++value)
        EXPECT_EQ(call_texts([&] { EXPECT_EQ(set_tftpAction(value), -1); }),
                  Calls{"flash_tftp_start(" + std::to_string(value - 1) + ")"});
}

TEST_F(FilesTest, StartUpChoicesAndTheirRefusals) {
    EXPECT_EQ(get_restartFirmware(), 1);
    EXPECT_EQ(get_restartConfig(), 1);
    EXPECT_EQ(set_restartConfig(2), 0);
    EXPECT_EQ(get_restartConfig(), 2);
    EXPECT_EQ(get_fileInfoIsStartUp(SW_FILE_CONFIG, 1), 2);
    EXPECT_EQ(get_fileInfoIsStartUp(SW_FILE_CONFIG, 2), 1);
    // An empty slot cannot be chosen; the choice stays.
    EXPECT_LT(set_restartFirmware(2), 0);
    EXPECT_LT(set_restartConfig(4), 0);
    EXPECT_EQ(get_restartConfig(), 2);
    // false(2) is accepted only for a file that is not the start-up one.
    EXPECT_EQ(set_fileInfoIsStartUp(SW_FILE_CONFIG, 1, 2), 0);
    EXPECT_LT(set_fileInfoIsStartUp(SW_FILE_CONFIG, 2, 2), 0);
    EXPECT_EQ(set_fileInfoIsStartUp(SW_FILE_CONFIG, 1, 1), 0);
    EXPECT_EQ(get_restartConfig(), 1);
}

TEST_F(FilesTest, FileRowsAndDeletion) {
    init_index_fileInfoTable(add_pair_row<int32_t>);
    EXPECT_EQ(rows().keys, (std::vector<std::string>{"1.1", "2.1", "2.2"}));
    EXPECT_EQ(read_text(get_fileInfoFileName, SW_FILE_CONFIG, 2), "lab-config");
    EXPECT_EQ(get_fileInfoFileSize(SW_FILE_CONFIG, 2), 13);
    EXPECT_EQ(get_fileInfoFileType(SW_FILE_CONFIG, 2), 2);
    EXPECT_EQ(get_fileInfoChecksum(SW_FILE_CONFIG, 2), sw().files().config[1].crc32);
    EXPECT_EQ(read_text(get_fileInfoCreationTime, SW_FILE_CONFIG, 2).size(), 19u);
    // Indexes beyond the store read as nothing and write nothing.
    const std::pair<int32_t, int32_t> outside[] = {{0, 1}, {3, 1}, {SW_FILE_FIRMWARE, 3}, {SW_FILE_CONFIG, 0}};
    for (auto [kind, index] : outside) {
        EXPECT_EQ(read_text(get_fileInfoFileName, kind, index), "") << kind << "." << index;
        EXPECT_EQ(get_fileInfoIsStartUp(kind, index), 0);
        EXPECT_EQ(call_texts([&] { EXPECT_LT(set_fileInfoDelete(kind, index, 2), 0); }), Calls{});
    }
    // The start-up file stays; another one goes, and its row with it.
    EXPECT_LT(set_fileInfoDelete(SW_FILE_CONFIG, 1, 2), 0);
    EXPECT_EQ(set_fileInfoDelete(SW_FILE_CONFIG, 2, 1), 0);
    EXPECT_EQ(exists_entry_fileInfoTable(SW_FILE_CONFIG, 2), 1);
    EXPECT_EQ(set_fileInfoDelete(SW_FILE_CONFIG, 2, 2), 0);
    rows().clear();
    EXPECT_EQ(exists_entry_fileInfoTable(SW_FILE_CONFIG, 2), 0);
    EXPECT_EQ(rows().removed, std::vector<std::string>{"fileInfoTable 2.2"});
}

TEST_F(FilesTest, ATransferToASilentServerFailsInsteadOfHanging) {
    sw().set_tftp_port(silent_port());
    EXPECT_EQ(get_tftpAction(), 1);
    ASSERT_EQ(set_tftpAction(3), 0);  // downloadConfig
    // The SET has returned while the transfer still runs.
    EXPECT_EQ(get_tftpAction(), 6);
    // A second transfer is refused while one runs.
    EXPECT_LT(set_tftpAction(5), 0);
    EXPECT_EQ(settled_action(), 8);
    EXPECT_EQ(sw().files().tftp_error, "no answer from the server");
    // The store is as it was.
    const std::vector<uint8_t> bytes = sw().file_bytes(SW_FILE_CONFIG, 0);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "hostname switch\n!\nend\n");
    EXPECT_EQ(read_text(get_fileInfoFileName, SW_FILE_CONFIG, 1), "startup-config");
    // none(1) forgets the failure.
    EXPECT_EQ(set_tftpAction(1), 0);
    EXPECT_EQ(get_tftpAction(), 1);
}

TEST_F(FilesTest, TransfersNeedAServerAFileAndSomethingToSend) {
    const struct {
        const char *what;
        std::function<void()> prepare;
        int32_t action;
    } cases[] = {
        {"no server", [] { set_tftpServer(0); }, 2},
        {"an empty configuration slot to upload", [] { set_tftpFlashConfig(3); }, 5},
    };
    for (const auto &c : cases) {
        c.prepare();
        EXPECT_LT(set_tftpAction(c.action), 0) << c.what;
        EXPECT_EQ(get_tftpAction(), 1) << c.what;
    }
    // Names that would leave the server's directory are refused.
    for (const char *name : {"/etc/passwd", "../x", "a/../../b"})
        EXPECT_LT(set_tftpFile(bytes(name), std::strlen(name)), 0) << name;
    EXPECT_LT(set_tftpFile(bytes("a\0b"), 3), 0);
    EXPECT_EQ(read_text(get_tftpFile), "sw.cfg");
}

TEST_F(FilesTest, ARestartIsRecordedOnceAndTheUptimeStartsAgain) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    ASSERT_GE(uptime(), 1u);
    const auto calls = calls_named("cfg_restart", [] { EXPECT_EQ(set_restartControl(3), 0); });
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].args, "2");
    EXPECT_EQ(sw().files().restarts, 1u);
    EXPECT_EQ(sw().files().last_restart, SW_RESTART_COLD);
    EXPECT_EQ(uptime(), 0u);
    EXPECT_EQ(get_restartControl(), 1);
}

}  // namespace
}  // namespace unit
