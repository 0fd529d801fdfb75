// web_guard.h: who may talk to the start page's server.
//
// The server listens on 127.0.0.1 only, but any page a browser opens may
// send requests there, and another local account may connect too. So, like
// the notebook servers of data science, every request must carry a random
// token: in the address once (the URL that `corvane serve` prints), after
// which it lives in an HttpOnly, SameSite=Strict cookie. The Host header
// must name 127.0.0.1 or localhost with the server's port (a page of
// another name that resolves to 127.0.0.1 gets nothing), and a request
// that changes something must not come from a foreign Origin.

#ifndef CORVANE_CLI_WEB_GUARD_H_
#define CORVANE_CLI_WEB_GUARD_H_

#include <string>

namespace corvane::cli {

inline constexpr char kTokenCookie[] = "corvane_token";

struct RequestFacts {
  std::string method;      // "GET", "POST", ...
  std::string host;        // the Host header
  std::string origin;      // the Origin header; empty when absent
  std::string cookie;      // the Cookie header
  std::string queryToken;  // the "token" query parameter
};

enum class Verdict {
  kAllow,
  kAllowAndSetCookie,  // the token came in the address: keep it in the cookie
  kForbidden,
};

Verdict Judge(const RequestFacts& request, const std::string& token, int port);

// The Set-Cookie value that keeps the token.
std::string TokenCookie(const std::string& token);

// The token of the data folder's ServeToken file (mode 0600), made on first
// use from 32 random bytes; empty with the reason when it can't be.
std::string LoadOrMakeToken(const std::string& dataFolder, std::string* lpError);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_WEB_GUARD_H_
