// SPDX-License-Identifier: MIT

// Boards behind access servers, as users have them: wcf on one side, and on the other vt63x-sim, or
// an access server that knows nothing of us; and a client that knows nothing of us.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <fstream>
#include <thread>

#include "tests/simulator/sim_process.h"
#include "tests/support/program.h"

namespace vt63x {
namespace {

ProgramResult Wcf(std::vector<std::string> arguments, const std::string& port) {
  arguments.insert(arguments.end(), {"--port", port});
  return RunningProgram(WCF_PROGRAM, arguments).Finish();
}

// A port that nobody used a moment ago.
std::string FreePort() {
  const UniqueFd socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  EXPECT_EQ(::bind(socket.get(), reinterpret_cast<sockaddr*>(&address), size), 0);
  EXPECT_EQ(::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size), 0);
  return std::to_string(ntohs(address.sin_port));
}

// The chip as vt63x-sim serves it.
class RemoteSim {
 public:
  explicit RemoteSim(Texts more = {}) : sim_(WithServer(std::move(more))), url_(sim_.Line()) {}

  const std::string& url() const { return url_; }
  std::string Order(const std::string& command) {
    sim_.Say(command + "\n");
    return sim_.Line();
  }
  Sim& sim() { return sim_; }

 private:
  static Texts WithServer(Texts texts) {
    texts.insert(texts.begin(), {"--rfc2217", "127.0.0.1:0", "--control"});
    return texts;
  }

  Sim sim_;
  std::string url_;
};

// A chip on a pseudo terminal with ser2net in front of it.
class AccessServer {
 public:
  AccessServer() : chip_({"--card", "5A3C1E78"}), port_(FreePort()) {
    const std::string config = files_.File("ser2net.yaml");
    std::ofstream(config) << "connection: &chip\n  accepter: telnet(rfc2217),tcp,127.0.0.1,"
                          << port_ << "\n  connector: serialdev," << chip_.Line()
                          << ",9600n81,local\n";
    server_ = std::make_unique<RunningProgram>("/usr/sbin/ser2net",
                                               std::vector<std::string>{"-n", "-d", "-c", config});
    for (int i = 0; i < 500 && !Listens(); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }

  std::string url() const { return "rfc2217://127.0.0.1:" + port_; }
  void Kill() { server_.reset(); }

 private:
  // Known without connecting, which would take the only client's place.
  bool Listens() const {
    char address[32];
    std::snprintf(address, sizeof address, "0100007F:%04X", std::stoi(port_));
    std::ifstream sockets("/proc/net/tcp");
    const std::string text{std::istreambuf_iterator<char>(sockets), {}};
    return text.find(std::string(address) + " 00000000:0000 0A") != std::string::npos;
  }

  TempDirectory files_;
  Sim chip_;
  std::string port_;
  std::unique_ptr<RunningProgram> server_;
};

std::string TourInProcess() {
  return RunningProgram(WCF_PROGRAM, {"run", TOUR_FILE, "--sim"}).Finish().out;
}

TEST(RemoteTest, TourRunsTheSameBehindAnAccessServer) {
  const std::string expected = TourInProcess();
  RemoteSim simulator;
  const ProgramResult over_ours = Wcf({"run", TOUR_FILE}, simulator.url());
  EXPECT_EQ(over_ours.exit_code, 0) << over_ours.err;
  EXPECT_EQ(over_ours.out, expected);
  AccessServer ser2net;
  const ProgramResult over_theirs = Wcf({"run", TOUR_FILE}, ser2net.url());
  EXPECT_EQ(over_theirs.exit_code, 0) << over_theirs.err;
  EXPECT_EQ(over_theirs.out, expected);
}

TEST(RemoteTest, CardIsReadBehindAnAccessServer) {
  AccessServer ser2net;
  const ProgramResult result = Wcf({"card", "read", "0", "--json"}, ser2net.url());
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_NE(result.out.find("\"data\":\"5A3C1E78"), std::string::npos) << result.out;
}

TEST(RemoteTest, CommandGetsTheServersName) {
  const ProgramResult result =
      RunningProgram(VT63X_SIM_PROGRAM, {"--rfc2217", "127.0.0.1:0", "--pace", "--", WCF_PROGRAM,
                                         "exec", "RE 37 91", "--port", "COM1"})
          .Finish();
  EXPECT_EQ(result.exit_code, 0) << result.err;
}

TEST(RemoteTest, SecondClientIsTurnedAwayAndTheFirstGoesOn) {
  RemoteSim simulator;
  AccessServer ser2net;
  for (const std::string& url : {simulator.url(), ser2net.url()}) {
    RunningProgram first(WCF_PROGRAM,
                         {"exec", "//> in", "::: LOOP", "RE 37 91", "JMP LOOP", "--port", url});
    ASSERT_TRUE(first.WaitForOutput("//< in"));
    const ProgramResult second = Wcf({"exec", "GR 37"}, url);
    EXPECT_EQ(second.exit_code, 3);
    EXPECT_NE(second.err.find(url + ": it is in use"), std::string::npos) << second.err;
    first.Signal(SIGINT);
    const ProgramResult broken_off = first.Finish();
    EXPECT_NE(broken_off.err.find("broken off: "), std::string::npos) << broken_off.err;
    EXPECT_NE(broken_off.err.find(" made, 0 failed"), std::string::npos) << broken_off.err;
    // And there is room again.
    EXPECT_EQ(Wcf({"exec", "RE 37 91"}, url).exit_code, 0);
  }
}

TEST(RemoteTest, ServerThatGoesInTheMiddleOfARunEndsIt) {
  AccessServer ser2net;
  RunningProgram run(WCF_PROGRAM,
                     {"exec", "//> in", "::: LOOP", "GR 37", "JMP LOOP", "--port", ser2net.url()});
  ASSERT_TRUE(run.WaitForOutput("GR  37"));
  ser2net.Kill();
  const ProgramResult result = run.Finish();
  EXPECT_EQ(result.exit_code, 5) << result.err;
  EXPECT_NE(result.err.find("the line went away"), std::string::npos) << result.err;
}

TEST(RemoteTest, FaultsTakeTheRemoteLineAway) {
  RemoteSim simulator({"--fault", "hang-up@3"});
  const ProgramResult result = Wcf({"exec", "GR 37", "GR 37", "GR 37"}, simulator.url());
  EXPECT_EQ(result.exit_code, 5) << result.err;
}

TEST(RemoteTest, RingEndsTheWaitsOfACommandFile) {
  RemoteSim simulator;
  struct Case {
    const char* before;
    const char* line;
    const char* order;  // given while the line waits
    const char* result;
  };
  for (const Case& c : {
           Case{"ring off", "WIE 20000", "ring pulse 1", "(Result: 1)"},
           Case{"ring off", "WIL 01 20000", "ring on", "(Result: 1)"},
           Case{"ring on", "WIL 00 20000", "ring off", "(Result: 1)"},
           Case{"ring on", "WIL 00 60", "", "(Result: 0)"},
           Case{"ring on", "WIL 01 60", "", "(Result: 1)"},
           Case{"ring off", "WIE 60", "", "(Result: 0)"},
           Case{"ring on", "WIE 60", "", "(Result: 0)"},  // a level is no edge
           Case{"ring off", "WIE 60", "ring on", "(Result: 0)"},
       }) {
    EXPECT_EQ(simulator.Order(c.before), "ok");
    RunningProgram run(WCF_PROGRAM,
                       {"exec", "GR 37", "//> now", c.line, "GR 37", "--port", simulator.url()});
    ASSERT_TRUE(run.WaitForOutput("//< now"));
    // Again and again: the first may come before the wait has begun.
    for (int i = 0; i < 400 && *c.order != '\0'; ++i) {
      if (run.Out().find("(Result:") != std::string::npos) break;
      EXPECT_EQ(simulator.Order(c.order), "ok");
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const ProgramResult result = run.Finish();
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_NE(result.out.find(c.result), std::string::npos) << c.line << '\n' << result.out;
    EXPECT_TRUE(result.out.ends_with("(Status: 0x0000)\n")) << result.out;
  }
}

// Nothing is left of a wait that timed out, and a ring between two waits is the second's.
TEST(RemoteTest, RingBelongsToTheWaitThatComesNext) {
  RemoteSim simulator;
  RunningProgram run(WCF_PROGRAM, {"exec", "WIE 30", "//> now", "SLP 1500", "WIE 20000", "WIE 30",
                                   "--port", simulator.url()});
  ASSERT_TRUE(run.WaitForOutput("//< now"));
  EXPECT_EQ(simulator.Order("ring pulse 5"), "ok");
  const std::string out = run.Finish().out;
  EXPECT_NE(out.find("Timeout = 20000 (Result: 1)"), std::string::npos) << out;
  const std::string last = out.substr(out.rfind("WIE"));
  EXPECT_NE(last.find("(Result: 0)"), std::string::npos) << out;
}

TEST(RemoteTest, RingCommandsThatMakeNoSenseChangeNothing) {
  RemoteSim simulator;
  for (const char* line : {"ring", "ring 1", "ring pulse", "ring pulse 0", "ring pulse 60001",
                           "ring pulse x", "ring on now", "ring pulse 5 6", "ring pulse 5x"}) {
    EXPECT_EQ(simulator.Order(line).find("error: ring on, ring off"), 0u) << line;
  }
  Sim on_a_terminal({"--control"});
  on_a_terminal.Line();
  on_a_terminal.Say("ring on\n");
  EXPECT_EQ(on_a_terminal.Line().find("error: this line has no ring indicator"), 0u);
}

TEST(RemoteTest, AddressesThatCannotBeServedAreNamed) {
  for (const char* address : {"127.0.0.1", ":4001", "no-such-host.invalid:4001", "127.0.0.1:x"}) {
    const ProgramResult result = RunningProgram(VT63X_SIM_PROGRAM, {"--rfc2217", address}).Finish();
    EXPECT_EQ(result.exit_code, 3) << address;
    EXPECT_EQ(result.err.find(std::string("vt63x-sim: ") + address), 0u) << result.err;
  }
}

TEST(RemoteTest, IndependentClientDrivesTheSimulator) {
  RemoteSim simulator;
  const TempDirectory files;
  const std::string out = files.File("out");
  const std::string command =
      "/usr/bin/python3 " PYSERIAL_PEER " " + simulator.url() + " >" + out + " 2>&1";
  std::FILE* const peer = ::popen(command.c_str(), "we");
  ASSERT_NE(peer, nullptr);
  for (int i = 0; i < 2000 && files.Read("out").find("ring") == std::string::npos; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_EQ(simulator.Order("ring on"), "ok");
  std::fputs("on\n", peer);
  EXPECT_EQ(::pclose(peer), 0);
  EXPECT_EQ(files.Read("out"),
            "version 91\nevery value\nat 115200 91\npurged 91\nring False\nring True\n");
}

}  // namespace
}  // namespace vt63x
