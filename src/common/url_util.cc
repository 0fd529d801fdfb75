#include "common/url_util.h"

#include <array>

#include "common/text_util.h"

namespace corvane {
namespace {

using View = std::u16string_view;
constexpr size_t kNpos = View::npos;

constexpr View kHttpWww = u"http://www.";
constexpr View kHttp = u"http://";
constexpr View kWww = u"www.";
constexpr View kSchemeMark = u"://";

// Country suffixes under which a second-level suffix is looked for.
constexpr std::array<View, 2> kCountrySuffixes = {u".cn", u".hk"};
// Second-level suffixes recognised in front of a country suffix.
constexpr std::array<View, 5> kSecondLevelSuffixes = {u".com", u".net", u".gov", u".org", u".edu"};

template <size_t N>
bool IsInList(View text, const std::array<View, N>& list) {
  for (View entry : list) {
    if (AsciiEqualsIgnoreCase(text, entry)) return true;
  }
  return false;
}

// True when the text begins the way "%hd.%hd.%hd.%hd" converts all four
// fields; whatever follows the fourth number does not matter.
bool StartsWithFourNumbers(View text) {
  size_t pos = 0;
  int16_t ignored = 0;
  for (int field = 0; field < 4; ++field) {
    if (field > 0) {
      if (pos >= text.size() || text[pos] != u'.') return false;
      ++pos;
    }
    if (!ScanInt16(text, &pos, &ignored)) return false;
  }
  return true;
}

// True when the text begins with a scheme: "://" with no "/" in front of it.
bool HasScheme(View url) {
  const size_t mark = url.find(kSchemeMark);
  return mark != kNpos && mark > 0 && url.substr(0, mark).find(u'/') == kNpos;
}

View FullDomainView(View url) {
  View host = url;
  const size_t mark = url.find(kSchemeMark);
  // A "://" behind a "/" sits in a path or query, not after a scheme.
  if (mark != kNpos && url.substr(0, mark).find(u'/') == kNpos) host = url.substr(mark + kSchemeMark.size());
  host = host.substr(0, host.find(u'/'));
  const size_t colon = host.rfind(u':');
  if (colon != kNpos && colon >= 1) host = host.substr(0, colon);
  if (!host.empty() && host.back() == u'.') host.remove_suffix(1);
  return host;
}

// The main domain as a view into host. The suffix is measured on a prefix
// of the host that shrinks; the result always runs to the host's end.
View MainDomainView(View host) {
  if (StartsWithFourNumbers(host)) return host;
  View rest = host;
  const size_t lastDot = rest.rfind(u'.');
  if (lastDot != kNpos) {
    const View tail = rest.substr(lastDot);
    rest = rest.substr(0, lastDot);
    const size_t secondDot = rest.rfind(u'.');
    if (IsInList(tail, kCountrySuffixes) && secondDot != kNpos &&
        IsInList(rest.substr(secondDot), kSecondLevelSuffixes)) {
      rest = rest.substr(0, secondDot);
    }
  }
  const size_t labelDot = rest.rfind(u'.');
  return labelDot == kNpos ? host : host.substr(labelDot + 1);
}

}  // namespace

void MakeFixedURL(std::u16string& url, int32_t* hadWww, int32_t* hadSlash) {
  const View text = url;
  if (text.starts_with(kHttpWww)) {
    if (hadWww != nullptr) *hadWww = 1;
    url.erase(0, kHttpWww.size());
  } else if (text.starts_with(kHttp)) {
    url.erase(0, kHttp.size());
  } else if (text.starts_with(kWww)) {
    if (hadWww != nullptr) *hadWww = 1;
    url.erase(0, kWww.size());
  }
  if (!url.empty() && url.back() == u'/') {
    if (hadSlash != nullptr) *hadSlash = 1;
    url.pop_back();
  }
}

void MakeFixedURL(std::u16string& url) { MakeFixedURL(url, nullptr, nullptr); }

void RestoreURL(View fixedUrl, int32_t hadWww, int32_t hadSlash, std::u16string* out) {
  out->clear();
  // Only "http://" is taken off a URL to fix it: a URL that kept a scheme
  // of its own (https, ftp) is whole already, and "http://" in front of it
  // would make an address that leads nowhere.
  if (!HasScheme(fixedUrl)) {
    out->assign(kHttp);
    if (hadWww) out->append(kWww);
  }
  out->append(fixedUrl);
  if (hadSlash) out->push_back(u'/');
}

bool GetFullDomain(View url, std::u16string* out) {
  out->assign(FullDomainView(url));
  return true;
}

bool GetMainDomain(View host, std::u16string* out) {
  out->assign(MainDomainView(host));
  return !out->empty();
}

void GetMainDomainOfURL(View url, std::u16string* out) {
  const View host = FullDomainView(url);
  if (host.empty()) return;
  out->assign(MainDomainView(host));
}

bool IsMainDomain(View domain) {
  const View main = MainDomainView(domain);
  return !main.empty() && AsciiEqualsIgnoreCase(FullDomainView(domain), main);
}

bool IsMainDomain(const char16_t* domain) { return domain != nullptr && IsMainDomain(View(domain)); }

bool IsSameFullDomain(View a, View b) { return AsciiEqualsIgnoreCase(a, b); }

bool IsSameMainDomain(View a, View b) { return AsciiEqualsIgnoreCase(MainDomainView(a), MainDomainView(b)); }

bool IsDynamicURL(View url) { return url.find(u'?') != kNpos; }

bool IsPathURL(View fixedUrl) {
  const size_t slash = fixedUrl.rfind(u'/');
  return slash == kNpos || slash + 1 == fixedUrl.size();
}

}  // namespace corvane
