// url_util.h: the fixed form of a URL, its full and main domain, and the
// tests the analysis makes on them.
//
// These are plain substring rules, not an RFC 3986 parser: stored FixedURL,
// Domain and MainDomain values come from them, so their behaviour on odd
// input is fixed too. Prefix tests ("http://", "www.") are case-sensitive;
// domain comparisons fold ASCII case only. No state, safe on any thread.
// They run once or more per visit, so results go into caller-owned strings
// whose capacity is reused.

#ifndef CORVANE_COMMON_URL_UTIL_H_
#define CORVANE_COMMON_URL_UTIL_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace corvane {

// Takes "http://www.", or else "http://", or else "www." off the front (at
// most one of them) and then one trailing "/" off the end. *hadWww and
// *hadSlash are only ever set to 1, never cleared: the caller zeroes them.
// Either pointer may be null.
void MakeFixedURL(std::u16string& url, int32_t* hadWww, int32_t* hadSlash);
void MakeFixedURL(std::u16string& url);

// "http://" + ("www." if hadWww) + fixedUrl + ("/" if hadSlash). A fixed
// URL that kept a scheme of its own (https://...) gets no "http://" and no
// "www." in front: it is whole already.
void RestoreURL(std::u16string_view fixedUrl, int32_t hadWww, int32_t hadSlash, std::u16string* out);

// The host of a URL or of a bare host text: behind a leading scheme, cut at
// the first "/", without a port (a ":" at position 1 or later) and without
// one trailing dot. Case is kept. Always returns true; a URL without a host
// gives empty text, so callers test the length.
bool GetFullDomain(std::u16string_view url, std::u16string* out);

// The registrable part of a host: its last label in front of the suffix,
// plus the suffix, which is one label, or two under ".cn"/".hk" when the
// second is one of ".com", ".net", ".gov", ".org", ".edu". A host that
// begins with four dotted numbers is its own main domain. False when the
// result is empty (only for an empty host).
bool GetMainDomain(std::u16string_view host, std::u16string* out);

// GetMainDomain of the URL's full domain; *out is left as it was when the
// URL has no host.
void GetMainDomainOfURL(std::u16string_view url, std::u16string* out);

// True when a bare domain is its own main domain, so that "www." can be put
// in front of it. False for null.
[[nodiscard]] bool IsMainDomain(std::u16string_view domain);
[[nodiscard]] bool IsMainDomain(const char16_t* domain);

[[nodiscard]] bool IsSameFullDomain(std::u16string_view a, std::u16string_view b);

// Two hosts whose main domains are both empty count as the same.
[[nodiscard]] bool IsSameMainDomain(std::u16string_view a, std::u16string_view b);

// True when the text holds a "?" anywhere.
[[nodiscard]] bool IsDynamicURL(std::u16string_view url);

// True when a fixed URL has no "/" at all, or its last "/" is its last
// character: a site's bare address or a directory page.
[[nodiscard]] bool IsPathURL(std::u16string_view fixedUrl);

}  // namespace corvane

#endif  // CORVANE_COMMON_URL_UTIL_H_
