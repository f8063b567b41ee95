#include "commands/live_command.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "base/failure.h"
#include "base/file_path.h"
#include "base/interruption.h"
#include "base/text.h"
#include "commands/declared_options.h"
#include "http/listen_address.h"
#include "page/engine.h"
#include "page/server.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace fisheye_calibration::program {
namespace {

struct LiveOptions {
  std::vector<std::string> sources;
  std::string listen = "127.0.0.1:8737";
  std::filesystem::path output;
};

void prepareOutput(const std::filesystem::path& folder) {
  std::error_code error;
  if (folder.empty() || std::filesystem::is_directory(folder, error)) {
    return;
  }
  if (std::filesystem::exists(folder, error)) {
    failBadInput("--output: " + nameOf(folder) + " is no folder");
  }
  std::filesystem::create_directory(folder, error);
  if (error) {
    failBadInput("--output: " + nameOf(folder) + ": " + error.message());
  }
}

// Frames of many megabytes come and go all the time. Memory that the system takes back after each
// must be cleared by it for the next, which took a third of the time of a corrected frame.
void keepMemory() {
#ifdef __GLIBC__
  constexpr int kMegabyte = 1 << 20;
  mallopt(M_MMAP_THRESHOLD, 32 * kMegabyte);
  mallopt(M_TRIM_THRESHOLD, 256 * kMegabyte);
  mallopt(M_ARENA_MAX, 4);  // each keeps its own
#endif
}

int run(const LiveOptions& options, const Streams& streams) {
  if (options.sources.size() > 2) {
    failBadInput("--source: give one or two sources");
  }
  const ListenAddress listen = parseListenAddress("--listen", options.listen);
  keepMemory();
  prepareOutput(options.output);
  Engine engine({.sources = options.sources,
                 .folder = options.output,
                 .version = FISHEYE_CALIBRATION_VERSION});
  Server server(engine, listen.host, listen.port);
  const Interruption interruption;
  std::atomic<bool> ended = false;
  std::thread answering([&] {
    server.run();
    ended = true;
  });
  while (!server.runs() && !ended) {
    std::this_thread::yield();
  }
  streams.out << "Open this address in a browser: " << server.address() << std::endl;
  if (!server.access().token.empty()) {
    streams.messages << "note: whoever has this address can see the cameras and calibrate them; "
                        "what is sent is not encrypted\n";
    if (listensEverywhere(listen.host)) {
      streams.messages << "note: on other machines, put this one's address in the place of "
                       << listen.host << "\n";
    }
  }
  streams.progress << "Ctrl+C ends it" << std::endl;
  while (!interruption.requested() && !ended) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  const bool asked = interruption.requested();
  engine.stop();
  server.stop();
  answering.join();
  if (!asked) {
    failJob("the system lets the program answer no more requests");
  }
  return kExitOk;
}

}  // namespace

Command addLiveCommand(CLI::App& app) {
  const auto options = std::make_shared<LiveOptions>();
  CLI::App* command =
      addCommand(app, "live", "Set a machine up in the browser: a page that guides through it");
  addOption(*command, "--source", options->sources,
            "a device (/dev/video0 or its index), stream address, video file, folder or picture; "
            "a second one for two cameras")
      .typeName("SOURCE")
      .oneValueEachTime()
      .required();
  addOption(*command, "--listen", options->listen,
            "where to answer; beyond this machine only with the token in the printed address")
      .typeName("ADDRESS:PORT")
      .showDefault();
  addPath(*command, "--output", options->output,
          "folder for camera.ini, dual.ini and the reports (made if it is missing)")
      .typeName("FOLDER");
  setFooter(*command,
            "No browser is opened: open the printed address.\n\nExamples:\n"
            "  fisheye-calibration live --source /dev/video0 --output machine\n"
            "  fisheye-calibration live --source 0 --source 1 --output machine");
  return {.arguments = command,
          .run = [options](const Streams& streams) { return run(*options, streams); },
          .printsResults = true};
}

}  // namespace fisheye_calibration::program
