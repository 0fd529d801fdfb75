// cmd_serve.cc: "serve": the start page on 127.0.0.1, until interrupted.

#include <csignal>
#include <cstdio>
#include <memory>

#include "cli/options.h"
#include "cli/web_server.h"

namespace corvane::cli {
namespace {

// The server that a signal stops.
StartPageServer* g_running = nullptr;

void StopOnSignal(int) {
  if (g_running != nullptr) g_running->Stop();
}

int RunServe(int port) {
  StartPageServer server;
  std::string error;
  if (!server.Start(port, &error)) return Failure(error);
  std::printf("Start page: %s\n", server.Url().c_str());
  std::printf("Open it, or set it as the browser's home page; Ctrl-C stops the server.\n");
  std::fflush(stdout);
  g_running = &server;
  std::signal(SIGINT, StopOnSignal);
  std::signal(SIGTERM, StopOnSignal);
  server.Run();
  g_running = nullptr;
  return kExitOk;
}

}  // namespace

void AddServeCommand(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  static_cast<void>(global);
  auto port = std::make_shared<int>(8717);
  CLI::App* sub = app.add_subcommand("serve", "Serve the start page on 127.0.0.1");
  sub->add_option("--port", *port, "Port on 127.0.0.1 (0: any free one)")->check(CLI::Range(0, 65535));
  lpTable->emplace_back(sub, [port] { return RunServe(*port); });
}

}  // namespace corvane::cli
