// SPDX-License-Identifier: MIT

// `wcf card` and `wcf dump` as their users run them.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "cli/card_commands.h"
#include "tests/support/program.h"

namespace vt63x {
namespace {

using Arguments = std::vector<std::string>;

ProgramResult Wcf(const Arguments& arguments) {
  return RunningProgram(WCF_PROGRAM, arguments).Finish();
}

ProgramResult OverALine(const Arguments& sim_options, Arguments wcf_arguments) {
  Arguments all = sim_options;
  all.insert(all.end(), {"--", WCF_PROGRAM});
  wcf_arguments.insert(wcf_arguments.end(), {"--port", "COM1"});
  all.insert(all.end(), wcf_arguments.begin(), wcf_arguments.end());
  return RunningProgram(SIM_PROGRAM, all).Finish();
}

TEST(BytesFromHexTest, TakesExactlySoManyPairs) {
  EXPECT_EQ(BytesFromHex("00a5Ff", 3), (Bytes{0x00, 0xA5, 0xFF}));
  EXPECT_EQ(BytesFromHex("", 0), Bytes{});
  for (const char* text : {"00a5F", "00a5FFF", "00a5Fg", "0x12FF", " 0a5FF", "-0a5FF"}) {
    EXPECT_FALSE(BytesFromHex(text, 3).has_value()) << text;
  }
}

TEST(WcfCardTest, ScanFindsEveryLengthOfIdentifier) {
  const ProgramResult result = Wcf({"card", "scan", "--sim"});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_NE(result.out.find("Anticollision/Select(0x93, 0x08, 0x5A3C1E78) --> Status: 0x0000\n"),
            std::string::npos)
      << result.out;
  EXPECT_EQ(result.err, "wcf: 3 cards\n");
}

TEST(WcfCardTest, ScanOverALineEqualsTheOneInProcess) {
  const ProgramResult in_process =
      Wcf({"card", "scan", "--sim", "--card", "5A3C1E78", "--card", "04112233445566"});
  const ProgramResult over_line =
      OverALine({"--card", "5A3C1E78", "--card", "04112233445566"}, {"card", "scan"});
  EXPECT_EQ(over_line.exit_code, 0) << over_line.err;
  EXPECT_EQ(over_line.out, in_process.out);
}

TEST(WcfCardTest, JsonIsOneObjectALine) {
  const ProgramResult result = Wcf({"card", "--json", "scan", "--sim"});
  std::istringstream lines(result.out);
  std::vector<std::string> identifiers;
  for (std::string line; std::getline(lines, line);) {
    const auto object = nlohmann::json::parse(line);
    EXPECT_EQ(object.at("status"), "0x0000");
    identifiers.push_back(object.at("uid"));
  }
  EXPECT_EQ(identifiers.size(), 3u);
}

TEST(WcfCardTest, EmptyFieldIsAFailure) {
  const ProgramResult result = OverALine({}, {"card", "scan", "--json"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.out, "{\"operation\":\"scan\",\"status\":\"0x0001\"}\n");
}

TEST(WcfCardTest, WhatIsWrittenLastsInTheCardsFile) {
  const TempDirectory directory;
  const std::string card = "5A3C1E78=" + directory.File("card.bin");
  const std::string value = "0300000 0FCFFFFFF0300000005FA05FA";
  const Arguments sim = {"--sim", "--card", card};
  const auto run = [&](Arguments arguments) {
    arguments.insert(arguments.end(), sim.begin(), sim.end());
    return Wcf(arguments);
  };
  EXPECT_EQ(run({"card", "write", "5", value}).exit_code, 2) << "a blank among the digits";
  EXPECT_FALSE(std::filesystem::exists(directory.File("card.bin")));
  EXPECT_EQ(run({"card", "write", "5", "03000000FCFFFFFF0300000005FA05FA"}).exit_code, 0);
  EXPECT_EQ(run({"card", "value", "inc", "5", "4", "--to", "6"}).exit_code, 0);
  const ProgramResult read = run({"card", "read", "6", "--json"});
  EXPECT_EQ(nlohmann::json::parse(read.out).at("data"), "07000000F8FFFFFF0700000005FA05FA");
  EXPECT_EQ(run({"card", "value", "dec", "6", "10"}).exit_code, 0);
  EXPECT_EQ(run({"card", "value", "restore", "6", "--to", "4"}).exit_code, 0);
  EXPECT_NE(run({"card", "read", "4"}).out.find("0xFDFFFFFF02000000FDFFFFFF"), std::string::npos);
  EXPECT_EQ(run({"card", "value", "transfer", "4"}).exit_code, 1) << "nothing to transfer";
}

TEST(WcfCardTest, CardFileKeepsTheFirstCardsMemory) {
  const TempDirectory directory;
  const std::string file = directory.File("card.bin");
  const std::string data(32, '7');
  EXPECT_EQ(Wcf({"card", "write", "5", data, "--sim", "--card-file", file}).exit_code, 0);
  const ProgramResult over_line =
      OverALine({"--card", "5A3C1E78", "--card-file", file}, {"card", "read", "5"});
  EXPECT_NE(over_line.out.find("Read(0x05, 0x" + data + ")"), std::string::npos) << over_line.out;
  const ProgramResult too_many =
      Wcf({"card", "scan", "--sim", "--card", "01020304:plain", "--card-file", file});
  EXPECT_EQ(too_many.exit_code, 2);
  EXPECT_NE(too_many.err.find("there is no card whose memory"), std::string::npos);
}

TEST(WcfCardTest, PageCardsAreWrittenAndReadWithoutAKey) {
  const TempDirectory directory;
  const std::string card = "04112233445566:ostrel-page=" + directory.File("page.bin");
  EXPECT_EQ(Wcf({"card", "page", "9", "DEADBEEF", "--sim", "--card", card}).exit_code, 0);
  const ProgramResult read = Wcf({"card", "read", "8", "--sim", "--card", card, "--json"});
  EXPECT_EQ(nlohmann::json::parse(read.out).at("data"), "00000000DEADBEEF0000000000000000");
}

TEST(WcfCardTest, MemoryThatCannotBeStoredIsNamed) {
  const TempDirectory directory;
  std::filesystem::create_directory(directory.File("card.bin.new"));
  const std::string card = "5A3C1E78=" + directory.File("card.bin");
  const ProgramResult result =
      Wcf({"card", "write", "5", std::string(32, '0'), "--sim", "--card", card});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_NE(result.err.find("card.bin: cannot be written"), std::string::npos) << result.err;
}

TEST(WcfCardTest, AnswerLostInTheMiddleOfAScanIsNotItsEnd) {
  const ProgramResult result = OverALine(
      {"--card", "5A3C1E78", "--card", "04112233445566", "--air", "lost@6+1"}, {"card", "scan"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_NE(result.err.find("wcf: the scan ended after 1 card\n"), std::string::npos) << result.err;
}

TEST(WcfCardTest, FailedTimerSetUpIsAFailure) {
  const ProgramResult result =
      OverALine({"--card", "5A3C1E78", "--fault", "silence@46+1"}, {"card", "read", "5", "--json"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_NE(result.err.find("timer set-up: "), std::string::npos) << result.err;
  EXPECT_EQ(nlohmann::json::parse(result.out).at("status"), "0x0000");
}

TEST(WcfCardTest, LineThatGoesAwayHasItsExitCode) {
  for (const char* fault : {"hang-up@1", "hang-up@60", "hang-up@150"}) {
    const ProgramResult result =
        OverALine({"--card", "5A3C1E78", "--fault", fault}, {"card", "read", "5"});
    EXPECT_EQ(result.exit_code, 5) << fault << result.err;
  }
  EXPECT_EQ(OverALine({"--fault", "hang-up@20"}, {"dump"}).exit_code, 5);
}

TEST(WcfCardTest, ObjectsAreAllThatStandsOnStandardOutput) {
  const ProgramResult no_port = Wcf({"card", "scan", "--json", "--port", "/nowhere"});
  EXPECT_EQ(no_port.exit_code, 3);
  EXPECT_EQ(no_port.out, "");
  const ProgramResult silent = OverALine({"--fault", "silence"}, {"card", "scan", "--json"});
  EXPECT_EQ(silent.out, "{\"operation\":\"set-up\",\"status\":\"0x0104\"}\n");
}

TEST(WcfCardTest, WrongKeyFailsAndNamesTheStep) {
  const ProgramResult result =
      Wcf({"card", "read", "5", "--sim", "--key-b", "FFFFFFFFFFFF", "--card", "5A3C1E78"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_NE(result.err.find("wcf: authenticate: "), std::string::npos);
  EXPECT_EQ(Wcf({"card", "auth", "5", "--sim", "--key-b", "3C9A5E71B2D4"}).exit_code, 0);
}

TEST(WcfCardTest, OneOfSeveralCardsIsChosenByItsIdentifier) {
  for (const char* uid : {"5A3C1E78", "04112233445566", "04A1B2C3D4E5F6071829"}) {
    const ProgramResult result = Wcf({"card", "read", "5", "--sim", "--uid", uid, "--json"});
    EXPECT_EQ(result.exit_code, 0) << result.err;
  }
  const ProgramResult missing = Wcf({"card", "read", "5", "--sim", "--uid", "01020304"});
  EXPECT_EQ(missing.exit_code, 1);
  EXPECT_NE(missing.err.find("there is no card 01020304 in the field"), std::string::npos);
}

TEST(WcfCardTest, WrongOperandsAreRefusedBeforeAnythingIsOpened) {
  struct Case {
    Arguments arguments;
    const char* words;
  };
  for (const Case& c :
       {Case{{"read", "256"}, "256"}, Case{{"read", "-1"}, "-1"}, Case{{"read", "x"}, "x"},
        Case{{"write", "5", "0011"}, "32 hexadecimal"},
        Case{{"page", "5", "001122"}, "8 hexadecimal"},
        Case{{"read", "5", "--key-a", "12"}, "12 hexadecimal digits"},
        Case{{"read", "5", "--key-a", "12345678901G"}, "12 hexadecimal digits"},
        Case{{"read", "5", "--uid", "112233"}, "8, 14 or 20"},
        Case{{"scan", "--card", "112233"}, "8, 14 or 20"}, Case{{"value", "dec", "5"}, "N"},
        Case{{"value"}, "subcommand"}, Case{{"frob"}, "'frob'"},
        Case{{"scan", "--key-a", "3C9A5E71B2D4"}, "key"},
        Case{{"read", "5", "--key-a", "3C9A5E71B2D4", "--key-b", "3C9A5E71B2D4"}, "excludes"}}) {
    Arguments arguments = {"card"};
    arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
    arguments.push_back("--sim");
    const ProgramResult result = Wcf(arguments);
    EXPECT_EQ(result.exit_code, 2) << c.arguments[0];
    EXPECT_NE(result.err.find(c.words), std::string::npos) << result.err;
    EXPECT_EQ(result.out, "");
  }
}

TEST(WcfCardTest, CardFileOfAWrongSizeIsRefusedAndLeftAlone) {
  const TempDirectory directory;
  const std::string file = directory.Write("card.bin", std::string(100, 'x'));
  const ProgramResult result =
      Wcf({"card", "write", "5", std::string(32, '0'), "--sim", "--card", "5A3C1E78=" + file});
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_NE(result.err.find(file), std::string::npos);
  EXPECT_EQ(directory.Read("card.bin"), std::string(100, 'x'));
}

TEST(WcfCardTest, SilentChipEndsTheCommandAtTheSetUp) {
  const ProgramResult result = OverALine({"--fault", "silence"}, {"card", "scan"});
  EXPECT_EQ(result.exit_code, 1);
  EXPECT_EQ(result.err.substr(0, result.err.find('\n')),
            "wcf: set-up: the chip does not answer on the line (status 0x0104)");
  EXPECT_EQ(result.out, "");
}

TEST(WcfDumpTest, PrintsFourRowsOrSaysThatItBrokeOff) {
  const ProgramResult result = OverALine({"--register", "2A=5C"}, {"dump"});
  EXPECT_EQ(result.exit_code, 0) << result.err;
  EXPECT_NE(result.out.find("  00 00 5c 00 00 00 00 00  \nP3 "), std::string::npos) << result.out;
  const ProgramResult broken = OverALine({"--fault", "silence@40"}, {"dump"});
  EXPECT_EQ(broken.exit_code, 1);
  EXPECT_EQ(broken.err.substr(0, broken.err.find('\n')),
            "wcf: dump: the chip does not answer on the line (status 0x0104)");
  EXPECT_EQ(broken.out.find("\nP3 "), std::string::npos);
}

}  // namespace
}  // namespace vt63x
