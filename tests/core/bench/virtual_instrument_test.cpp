#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/instrument/file_descriptor.h"

namespace kel::bench {
namespace {

constexpr int kPatience = 10'000;  // milliseconds; only a failing test waits that long

std::string readUntil(int descriptor, const std::string& end) {
    std::string text;
    while (!text.ends_with(end)) {
        pollfd ready{descriptor, POLLIN, 0};
        char byte = 0;
        if (::poll(&ready, 1, kPatience) != 1 || ::read(descriptor, &byte, 1) != 1) break;
        text += byte;
    }
    return text;
}

std::string ask(int descriptor, const std::string& command) {
    EXPECT_EQ(::write(descriptor, command.data(), command.size()),
              static_cast<ssize_t>(command.size()));
    return readUntil(descriptor, ">");
}

// The program in a session of its own, as its users start it.
class Program {
public:
    explicit Program(std::vector<std::string> arguments) {
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        output_ = FileDescriptor(ends[0]);
        FileDescriptor input(ends[1]);
        arguments.insert(arguments.begin(), KEL_VIRTUAL_INSTRUMENT);
        std::vector<char*> pointers;
        for (auto& argument : arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawnattr_t attributes;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawnattr_init(&attributes);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
        EXPECT_EQ(
            ::posix_spawn(&process_, pointers[0], &actions, &attributes, pointers.data(), environ),
            0);
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&actions);
    }
    ~Program() {
        if (process_ <= 0) return;
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }

    std::string firstLine() {
        auto line = readUntil(output_.get(), "\n");
        if (!line.empty()) line.pop_back();
        return line;
    }
    void terminate() { ::kill(process_, SIGTERM); }
    // The exit status, or -1 for another end. The pipe's end tells that the program has gone.
    int status() {
        readUntil(output_.get(), "never sent");
        int status = 0;
        ::waitpid(std::exchange(process_, 0), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    pid_t id() const { return process_; }

private:
    pid_t process_ = 0;
    FileDescriptor output_;
};

FileDescriptor connectTo(const std::string& port) {
    FileDescriptor descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port)));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(descriptor.get(), reinterpret_cast<sockaddr*>(&address), sizeof address),
              0);
    return descriptor;
}

class VirtualInstrument : public testing::Test {
protected:
    VirtualInstrument() {
        std::string name = (std::filesystem::temp_directory_path() / "kel-XXXXXX").string();
        folder = ::mkdtemp(name.data());
    }
    ~VirtualInstrument() override { std::filesystem::remove_all(folder); }

    std::filesystem::path folder;
};

TEST_F(VirtualInstrument, ServesATerminalThatIsClosedAndReopened) {
    const auto link = folder / "port";
    const auto state = folder / "state";
    Program program({"--pty", "--link", link.string(), "--state", state.string(), "--asleep",
                     "--time-scale", "100"});
    const std::string device = program.firstLine();
    EXPECT_EQ(std::filesystem::read_symlink(link), device);
    {
        FileDescriptor port(::open(link.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
        termios mode{};
        ASSERT_EQ(::tcgetattr(port.get(), &mode), 0);
        EXPECT_EQ(mode.c_lflag & (ECHO | ICANON), 0u);
        EXPECT_TRUE(ask(port.get(), std::string(1, '\0')).ends_with("firmware 1.0\r\n>"));
        EXPECT_EQ(ask(port.get(), "set station Pier\r"), "set station Pier\r\nOK\r\n>");
    }
    FileDescriptor port(::open(link.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    EXPECT_EQ(ask(port.get(), "get station\r"), "get station\r\nPier\r\n>");
    EXPECT_EQ(ask(port.get(), "savesetup\r"), "savesetup\r\nOK\r\n>");
    program.terminate();
    EXPECT_EQ(program.status(), 0);
    EXPECT_FALSE(std::filesystem::is_symlink(link));

    Program again({"--tcp", "0", "--state", state.string()});
    const auto client = connectTo(again.firstLine());
    EXPECT_EQ(ask(client.get(), "get station\r"), "get station\r\nPier\r\n>");
}

TEST_F(VirtualInstrument, ServesOneNetworkClientAfterTheOther) {
    const auto transcript = folder / "transcript";
    Program program({"--tcp", "0", "--vanish-after", "2", "--transcript", transcript.string()});
    const auto port = program.firstLine();
    auto first = connectTo(port);
    EXPECT_EQ(ask(first.get(), "ver\rhalf").substr(0, 5), "ver\r\n");
    const auto second = connectTo(port);
    first.reset();
    EXPECT_EQ(ask(second.get(), "get rate\r"), "get rate\r\n2\r\n>");
    EXPECT_EQ(readUntil(second.get(), "more"), "") << "the line has vanished";
    EXPECT_EQ(program.status(), 0);

    std::ifstream file(transcript);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NE(text.find(" < get rate\\r\n"), std::string::npos) << text;
}

TEST_F(VirtualInstrument, LetsInWhoTellsItsGatewayThePassword) {
    Program program({"--tcp", "0", "--gateway", "open sesame"});
    const auto port = program.firstLine();
    const auto refused = connectTo(port);
    EXPECT_EQ(ask(refused.get(), "KELGATE\n"), "REFUSED\r\n") << "and closed";
    const auto client = connectTo(port);
    EXPECT_EQ(ask(client.get(), "KELGATE open sesame\r\nget rate\r"),
              "READY\r\nget rate\r\n2\r\n>");
}

TEST_F(VirtualInstrument, IsGivenWhatTheServicesFind) {
    Program program({"--tcp", "0", "--card", "empty", "--access-code", "-5", "--bad-cell", "1",
                     "--no-compass", "--pressure-ramp", "1000", "--pressure-noise", "0",
                     "--fail-after", "6"});
    const auto client = connectTo(program.firstLine());
    const struct {
        const char *command, *answer;
    } rows[] = {{"card", "Files: 0\r\nUsed: 0\r\nCapacity: 8589934592\r\nRate: 57600"},
                {"compass", "ERROR: no compass"},
                {"firmware begin main -5", "OK"},
                {"firmware write 0 4b6550", "OK"},
                {"firmware read main 0 2", "DATA 2 188B2170\r\nKd"}};
    for (const auto& [command, answer] : rows) {
        EXPECT_EQ(ask(client.get(), std::string(command) + "\r"),
                  std::string(command) + "\r\n" + answer + "\r\n>");
    }
    const std::string collect = "pressure collect\r";
    EXPECT_EQ(::write(client.get(), collect.data(), collect.size()), 17);
    EXPECT_EQ(readUntil(client.get(), "260.1"), collect + "\nOK\r\n260.1");
    EXPECT_TRUE(ask(client.get(), "\r").ends_with(" dbar\r\n\r\n>"));
    EXPECT_EQ(ask(client.get(), "ver\r"), "ver\r\nERROR: out of order\r\n>");
}

TEST_F(VirtualInstrument, EndsWithItsParent) {
    Program parent({"--tcp", "0"});
    parent.firstLine();
    Program program({"--pty", "--parent", std::to_string(parent.id())});
    program.firstLine();
    parent.terminate();
    EXPECT_EQ(program.status(), 0);
}

TEST_F(VirtualInstrument, RefusesWhatItCannotServe) {
    const auto occupied = folder / "occupied";
    const auto broken = folder / "broken";
    std::ofstream(occupied) << "interval=60\n";
    std::ofstream(broken) << "interval=none\n";
    const struct {
        std::vector<std::string> arguments;
        int status;
    } cases[] = {
        {{}, 2},
        {{"--pty", "--tcp", "0"}, 2},
        {{"--tcp", "65536"}, 2},
        {{"--tcp"}, 2},
        {{"--pty", "--garble", "1.5"}, 2},
        {{"--pty", "surplus"}, 2},
        {{"--pty", "--gateway", ""}, 2},
        {{"--tcp", "0", "--gateway-fault", "hang"}, 2},
        {{"--tcp", "0", "--gateway", "", "--gateway-fault", "sulk"}, 2},
        {{"--pty", "--card", "sulky"}, 2},
        {{"--pty", "--bad-cell", "262144"}, 2},
        {{"--tcp", "0", "--listen", "nowhere"}, 1},
        {{"--pty", "--link", occupied.string()}, 1},
        {{"--pty", "--state", broken.string()}, 1},
        {{"--help"}, 0},
    };
    for (const auto& [arguments, status] : cases)
        EXPECT_EQ(Program(arguments).status(), status);
    EXPECT_TRUE(std::filesystem::is_regular_file(occupied));
}

}  // namespace
}  // namespace kel::bench
