// web_server.h: the start page's server on 127.0.0.1: one page and a small
// JSON API over the component, for a browser's home page and new tab.
//
//   GET  /                     the page (with ?token=... once: sets the cookie)
//   GET  /api/sites?n=N        pins first, sub-sites under their site
//   GET  /api/recent?n=N       what was taken up lately
//   GET  /api/history?n=N&page=P   the history by day, N rows a page
//   GET  /api/search?q=TEXT    the history search
//   GET  /api/favorites
//   GET  /api/explain?target=HOST  why it ranks there, in words
//   GET  /api/favicon?host=HOST    the icon from the browsers' stores
//   POST /api/pin {url,name}, /api/unpin {id: "p2"}, /api/hide {id,untilRebuild},
//        /api/update
//
// Every request passes web_guard.h first; bodies over 64 KiB get 413. The
// one provider session is shared by all requests, one at a time.

#ifndef CORVANE_CLI_WEB_SERVER_H_
#define CORVANE_CLI_WEB_SERVER_H_

#include <memory>
#include <string>

namespace corvane::cli {

class StartPageServer {
 public:
  StartPageServer();
  ~StartPageServer();
  StartPageServer(const StartPageServer&) = delete;
  StartPageServer& operator=(const StartPageServer&) = delete;

  // Opens the provider (the day's update runs if due), reads the icons and
  // binds 127.0.0.1:port (0: a free port). False with the reason.
  [[nodiscard]] bool Start(int port, std::string* lpError);
  int Port() const;
  // The address that carries the token: what a person opens, or sets as
  // the browser's home page.
  std::string Url() const;
  // Serves until Stop.
  void Run();
  void Stop();

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace corvane::cli

#endif  // CORVANE_CLI_WEB_SERVER_H_
