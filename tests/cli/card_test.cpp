// SPDX-License-Identifier: MIT

// `wcf card` and `wcf dump` as their users run them.

#include <gtest/gtest.h>

#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "cli/card_commands.h"
#include "tests/support/program.h"

namespace vt63x {
namespace {

using Arguments = std::vector<std::string>;

Arguments Words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

ProgramResult Wcf(const std::string& arguments) {
  return RunningProgram(WCF_PROGRAM, Words(arguments)).Finish();
}

ProgramResult OverALine(const std::string& sim_options, const std::string& wcf_arguments) {
  return RunningProgram(SIM_PROGRAM, Words(sim_options + " -- " WCF_PROGRAM " " + wcf_arguments +
                                           " --port COM1"))
      .Finish();
}

TEST(BytesFromHexTest, TakesExactlySoManyPairs) {
  EXPECT_EQ(BytesFromHex("00a5Ff", 3), (Bytes{0x00, 0xA5, 0xFF}));
  EXPECT_EQ(BytesFromHex("", 0), Bytes{});
  for (const char* text : {"00a5F", "00a5FFF", "00a5Fg", "0x12FF", " 0a5FF", "-0a5FF"}) {
    EXPECT_FALSE(BytesFromHex(text, 3).has_value()) << text;
  }
}

TEST(WcfCardTest, ScanFindsEveryLengthOfIdentifier) {
  const ProgramResult result = Wcf("card scan --sim");
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_NE(result.out.find("Anticollision/Select(0x93, 0x08, 0x5A3C1E78) --> Status: 0x0000\n"),
            std::string::npos)
      << result.out;
  EXPECT_EQ(result.err, "wcf: 3 cards\n");
}

TEST(WcfCardTest, JsonIsOneObjectALine) {
  const ProgramResult result = Wcf("card --json scan --sim");
  std::istringstream lines(result.out);
  std::vector<std::string> identifiers;
  for (std::string line; std::getline(lines, line);) {
    const auto object = nlohmann::json::parse(line);
    EXPECT_EQ(object.at("status"), "0x0000");
    identifiers.push_back(object.at("uid"));
  }
  EXPECT_EQ(identifiers.size(), 3u);
}

TEST(WcfCardTest, WhatIsWrittenLastsInTheCardsFile) {
  const TempDirectory directory;
  const std::string file = directory.File("card.bin");
  const auto run = [&](const std::string& arguments) {
    return Wcf("card " + arguments + " --sim --card 5A3C1E78=" + file);
  };
  EXPECT_EQ(run("write 5 0300000").exit_code, 2);
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_EQ(run("write 5 03000000FCFFFFFF0300000005FA05FA").exit_code, 0);
  EXPECT_EQ(run("value inc 5 4 --to 6").exit_code, 0);
  const ProgramResult read = run("read 6 --json");
  EXPECT_EQ(nlohmann::json::parse(read.out).at("data"), "07000000F8FFFFFF0700000005FA05FA");
  EXPECT_EQ(run("value dec 6 10").exit_code, 0);
  EXPECT_EQ(run("value restore 6 --to 4").exit_code, 0);
  EXPECT_NE(run("read 4").out.find("0xFDFFFFFF02000000FDFFFFFF"), std::string::npos);
  EXPECT_EQ(run("value transfer 4").exit_code, 1) << "nothing to transfer";
  EXPECT_NE(OverALine("--card 5A3C1E78 --card-file " + file, "card read 4").out.find("0xFDFFFFFF"),
            std::string::npos);
}

TEST(WcfCardTest, EachWayToNameACardAndAKeyIsTaken) {
  const TempDirectory directory;
  const std::string page_card = " --card 04112233445566:ostrel-page=" + directory.File("page.bin");
  for (const std::string& arguments :
       {std::string("read 5 --uid 5A3C1E78"), std::string("read 5 --uid 04112233445566"),
        std::string("read 5 --uid 04A1B2C3D4E5F6071829"),
        std::string("auth 5 --key-b 3C9A5E71B2D4"),
        "write 5 00112233445566778899AABBCCDDEEFF --card-file " + directory.File("card.bin"),
        "page 9 DEADBEEF" + page_card}) {
    const ProgramResult result = Wcf("card --sim " + arguments);
    EXPECT_EQ(result.exit_code, 0) << result.err;
  }
  EXPECT_EQ(directory.Read("card.bin").at(81), '\x11');
  const ProgramResult page = Wcf("card read 8 --sim --json" + page_card);
  EXPECT_EQ(nlohmann::json::parse(page.out).at("data"), "00000000DEADBEEF0000000000000000");
}

TEST(WcfCardTest, WhatFailsIsNamedAndHasItsExitCode) {
  const TempDirectory directory;
  const std::string write = "write 5 00112233445566778899AABBCCDDEEFF --sim --card ";
  const std::string small = directory.Write("small.bin", std::string(100, 'x'));
  // Of the 255 characters of a file's name the lock needs 5 more than this, a new file 7.
  const std::string name(250, 'c');
  const std::string silent = "wcf: set-up: the chip does not answer on the line (status 0x0104)\n";
  struct Case {
    std::string sim;  // options of the simulator on a line; none: no simulator
    std::string wcf;
    int exit_code;
    std::string out;  // a part; none: nothing stands there
    std::string err;  // a part
  };
  for (const Case& c : {
           Case{"--pace", "scan --json", 1, R"({"operation":"scan","status":"0x0001"})", ""},
           Case{"--card 5A3C1E78 --card 04112233445566 --air lost@6+1", "scan", 1, "5A3C1E78",
                "wcf: the scan ended after 1 card\n"},
           Case{"--card 5A3C1E78 --fault silence@46+1", "read 5 --json", 1, R"("status":"0x0000"})",
                "timer set-up: "},
           Case{"--fault silence", "scan", 1, "", silent},
           Case{"--fault silence", "scan --json", 1, R"({"operation":"set-up","status":"0x0104"})",
                silent},
           Case{"--card 5A3C1E78 --fault hang-up@1", "read 5", 5, "", ""},
           Case{"--card 5A3C1E78 --fault hang-up@60", "read 5", 5, "Request", ""},
           Case{"--card 5A3C1E78 --fault hang-up@150", "read 5", 5, "Request", ""},
           Case{"", "scan --json --port /nowhere", 3, "", "/nowhere"},
           Case{"", write + "5A3C1E78=" + directory.File(name), 3, "Write",
                name + ": cannot be written"},
           Case{"", write + "5A3C1E78=" + small, 3, "", small},
           Case{"", "scan --sim --card 01020304:plain --card-file " + small, 2, "",
                "there is no card whose memory"},
           Case{"", "read 5 --sim --key-b FFFFFFFFFFFF --card 5A3C1E78", 1, "Authentication KeyB",
                "wcf: authenticate: "},
           Case{"", "read 5 --sim --uid 01020304", 1, "Request",
                "there is no card 01020304 in the field"},
           // Wrong operands, before anything is opened.
           Case{"", "read 256 --sim", 2, "", "256"},
           Case{"", "read -1 --sim", 2, "", "-1"},
           Case{"", "read x --sim", 2, "", "x"},
           Case{"", "write 5 0011 --sim", 2, "", "32 hexadecimal"},
           Case{"", "page 5 001122 --sim", 2, "", "8 hexadecimal"},
           Case{"", "read 5 --key-a 12 --sim", 2, "", "12 hexadecimal digits"},
           Case{"", "read 5 --key-a 12345678901G --sim", 2, "", "12 hexadecimal digits"},
           Case{"", "read 5 --uid 112233 --sim", 2, "", "8, 14 or 20"},
           Case{"", "scan --card 112233 --sim", 2, "", "8, 14 or 20"},
           Case{"", "value dec 5 --sim", 2, "", "N"},
           Case{"", "value --sim", 2, "", "subcommand"},
           Case{"", "frob --sim", 2, "", "'frob'"},
           Case{"", "scan --key-a 3C9A5E71B2D4 --sim", 2, "", "key"},
           Case{"", "read 5 --key-a 3C9A5E71B2D4 --key-b 3C9A5E71B2D4 --sim", 2, "", "excludes"},
       }) {
    const ProgramResult result =
        c.sim.empty() ? Wcf("card " + c.wcf) : OverALine(c.sim, "card " + c.wcf);
    SCOPED_TRACE(c.sim + " / " + c.wcf);
    EXPECT_EQ(result.exit_code, c.exit_code) << result.err;
    EXPECT_NE(result.out.find(c.out), std::string::npos) << result.out;
    EXPECT_EQ(result.out.empty(), c.out.empty()) << result.out;
    EXPECT_NE(result.err.find(c.err), std::string::npos) << result.err;
  }
  EXPECT_EQ(directory.Read("small.bin"), std::string(100, 'x')) << "left alone";
}

TEST(WcfDumpTest, PrintsFourRowsOrSaysThatItBrokeOff) {
  const ProgramResult result = OverALine("--register 2A=5C", "dump");
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_NE(result.out.find("  00 00 5c 00 00 00 00 00  \nP3 "), std::string::npos) << result.out;
  EXPECT_EQ(OverALine("--fault hang-up@20", "dump").exit_code, 5);
  const ProgramResult broken = OverALine("--fault silence@40", "dump");
  EXPECT_EQ(broken.exit_code, 1);
  EXPECT_EQ(broken.err.substr(0, broken.err.find('\n')),
            "wcf: dump: the chip does not answer on the line (status 0x0104)");
  EXPECT_EQ(broken.out.find("\nP3 "), std::string::npos);
}

}  // namespace
}  // namespace vt63x
