#include "cli/web_guard.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace corvane::cli {
namespace {

constexpr size_t kTokenBytes = 32;

std::string Lower(std::string text) {
  for (char& c : text) c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
  return text;
}

// A comparison whose time does not tell how much of the token was right.
bool SameToken(const std::string& given, const std::string& token) {
  if (given.size() != token.size() || token.empty()) return false;
  unsigned char differ = 0;
  for (size_t i = 0; i < token.size(); ++i) differ |= static_cast<unsigned char>(given[i] ^ token[i]);
  return differ == 0;
}

std::string CookieValue(const std::string& header, const std::string& name) {
  for (size_t start = 0; start < header.size();) {
    size_t end = header.find(';', start);
    if (end == std::string::npos) end = header.size();
    size_t first = header.find_first_not_of(' ', start);
    if (first < end && header.compare(first, name.size() + 1, name + "=") == 0) {
      return header.substr(first + name.size() + 1, end - first - name.size() - 1);
    }
    start = end + 1;
  }
  return std::string();
}

bool OwnName(const std::string& hostAndPort, int port) {
  const std::string host = Lower(hostAndPort), suffix = ":" + std::to_string(port);
  return host == "127.0.0.1" + suffix || host == "localhost" + suffix;
}

}  // namespace

Verdict Judge(const RequestFacts& request, const std::string& token, int port) {
  if (!OwnName(request.host, port)) return Verdict::kForbidden;
  const bool changes = request.method != "GET" && request.method != "HEAD";
  if (changes && !request.origin.empty()) {
    const std::string origin = Lower(request.origin), prefix = "http://";
    if (origin.rfind(prefix, 0) != 0 || !OwnName(origin.substr(prefix.size()), port)) return Verdict::kForbidden;
  }
  if (SameToken(CookieValue(request.cookie, kTokenCookie), token)) return Verdict::kAllow;
  if (SameToken(request.queryToken, token)) return Verdict::kAllowAndSetCookie;
  return Verdict::kForbidden;
}

std::string TokenCookie(const std::string& token) {
  return std::string(kTokenCookie) + "=" + token + "; Path=/; HttpOnly; SameSite=Strict";
}

std::string LoadOrMakeToken(const std::string& dataFolder, std::string* lpError) {
  const std::string path = dataFolder + "/ServeToken";
  std::ifstream in(path);
  std::string token((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  while (!token.empty() && (token.back() == '\n' || token.back() == '\r')) token.pop_back();
  if (token.size() == 2 * kTokenBytes && token.find_first_not_of("0123456789abcdef") == std::string::npos) {
    return token;
  }
  unsigned char bytes[kTokenBytes];
  if (getrandom(bytes, sizeof(bytes), 0) != static_cast<ssize_t>(sizeof(bytes))) {
    *lpError = std::string("no random bytes for the token: ") + std::strerror(errno);
    return std::string();
  }
  token.clear();
  for (unsigned char byte : bytes) token += "0123456789abcdef"[byte >> 4], token += "0123456789abcdef"[byte & 15];
  // Written anew, then renamed over whatever stood there. The host's umask
  // and the folder's default list make it 0600 (and keep the entry of the
  // person whose folder root may have made).
  const std::string temporary = path + ".tmp";
  int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  const std::string line = token + "\n";
  const bool written = fd >= 0 && write(fd, line.data(), line.size()) == static_cast<ssize_t>(line.size());
  if (fd >= 0) close(fd);
  if (!written || rename(temporary.c_str(), path.c_str()) != 0) {
    *lpError = "can't write " + path + ": " + std::strerror(errno);
    unlink(temporary.c_str());
    return std::string();
  }
  return token;
}

}  // namespace corvane::cli
