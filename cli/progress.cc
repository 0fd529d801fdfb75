#include "cli/progress.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace corvane::cli {

ProgressLine::ProgressLine(std::string text, bool enabled) : m_text(std::move(text)) {
  if (enabled && isatty(STDOUT_FILENO) == 1) m_thread = std::thread([this] { Run(); });
}

ProgressLine::~ProgressLine() { Stop(); }

void ProgressLine::Stop() {
  if (!m_thread.joinable()) return;
  m_stop = true;
  m_thread.join();
  std::printf("\r\033[K");
  std::fflush(stdout);
}

void ProgressLine::Run() {
  static constexpr char kFrames[] = "|/-\\";
  auto start = std::chrono::steady_clock::now();
  for (unsigned tick = 0; !m_stop; ++tick) {
    auto seconds = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start);
    std::printf("\r%c %s %llds", kFrames[tick % 4], m_text.c_str(), static_cast<long long>(seconds.count()));
    std::fflush(stdout);
    std::this_thread::sleep_for(std::chrono::milliseconds(120));
  }
}

}  // namespace corvane::cli
