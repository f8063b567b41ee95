#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "page/server.h"
#include "program/page/fake_machine.h"
#include "program/page/running_server.h"
#include "program/support/run_program.h"

namespace fisheye_calibration::program {
namespace {

TEST(LiveCommand, BadUsageIsRefusedBeforeAnythingIsOpened) {
  const support::TemporaryFolder folder;
  const auto refusal = [](const std::vector<std::string>& arguments) {
    std::vector<std::string> all = {"live", "--source", "a.png"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const Outcome outcome = runProgram(all);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.out, "");
    return outcome.err;
  };
  EXPECT_EQ(refusal({"--listen", "nowhere"}),
            "--listen: give an address and a port like 127.0.0.1:8737, not \"nowhere\"\n");
  EXPECT_EQ(refusal({"--listen", "127.0.0.1:65536"}),
            "--listen: give an address and a port like 127.0.0.1:8737, not \"127.0.0.1:65536\"\n");
  const std::string file = writeFile(folder, "file", "text");
  EXPECT_EQ(refusal({"--output", file}), "--output: " + file + " is no folder\n");
  const std::string inner = (std::filesystem::path(folder.file("missing")) / "inner").string();
  EXPECT_THAT(refusal({"--output", inner}), testing::StartsWith("--output: " + inner + ": "));
  EXPECT_EQ(refusal({"--source", "b.png", "--source", "c.png"}),
            "--source: give one or two sources\n");
}

TEST(LiveCommand, AMissingFolderForFilesIsMade) {
  const support::TemporaryFolder folder;
  const RunningServer running;  // so that the command ends
  const Outcome outcome = runProgram({"live", "--source", "a.png", "--listen", running.host(),
                                      "--output", folder.file("machine")});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_TRUE(std::filesystem::is_directory(folder.file("machine")));
}

TEST(LiveCommand, APortInUseIsNamed) {
  const RunningServer running;
  const Outcome outcome = runProgram({"live", "--source", "a.png", "--listen", running.host()});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_EQ(outcome.err, "--listen: " + running.host() +
                             " cannot be used; is another program listening there?\n");
}

}  // namespace
}  // namespace fisheye_calibration::program
