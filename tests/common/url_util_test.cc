#include "common/url_util.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>

#include "common/utf.h"

namespace corvane {
namespace {

using TextPair = std::pair<const char16_t*, const char16_t*>;
using TextFlag = std::pair<const char16_t*, bool>;

// A URL through the whole chain: fixed form and flags, its host, the host's
// main domain.
const std::tuple<const char16_t*, const char16_t*, int32_t, int32_t, const char16_t*, const char16_t*> kUrlCases[] = {
    {u"http://www.example.com.cn/", u"example.com.cn", 1, 1, u"example.com.cn", u"example.com.cn"},
    {u"http://example.com.cn", u"example.com.cn", 0, 0, u"example.com.cn", u"example.com.cn"},
    {u"www.example.com.cn", u"example.com.cn", 1, 0, u"example.com.cn", u"example.com.cn"},
    {u"example.com.cn/", u"example.com.cn", 0, 1, u"example.com.cn", u"example.com.cn"},
    {u"http://news.example.com.cn/a/b.html", u"news.example.com.cn/a/b.html", 0, 0, u"news.example.com.cn",
     u"example.com.cn"},
    {u"http://news.example.com.cn/a/", u"news.example.com.cn/a", 0, 1, u"news.example.com.cn", u"example.com.cn"},
    {u"https://www.example.com/", u"https://www.example.com", 0, 1, u"www.example.com", u"example.com"},
    {u"HTTP://WWW.EXAMPLE.COM/", u"HTTP://WWW.EXAMPLE.COM", 0, 1, u"WWW.EXAMPLE.COM", u"EXAMPLE.COM"},
    {u"http://www.www.example.com", u"www.example.com", 1, 0, u"www.example.com", u"example.com"},
    {u"http://www.example.com//", u"example.com/", 1, 1, u"example.com", u"example.com"},
    {u"http://example.com:8080/x?y=1", u"example.com:8080/x?y=1", 0, 0, u"example.com", u"example.com"},
    {u"example.com/r?u=http://example.org/z", u"example.com/r?u=http://example.org/z", 0, 0, u"example.com",
     u"example.com"},
    {u"ftp://files.example.org/pub/", u"ftp://files.example.org/pub", 0, 1, u"files.example.org", u"example.org"},
    {u"user:pw@example.com/x", u"user:pw@example.com/x", 0, 0, u"user", u"user"},
    {u"http://example.com./a", u"example.com./a", 0, 0, u"example.com", u"example.com"},
    {u"http://192.168.0.1:8080/x", u"192.168.0.1:8080/x", 0, 0, u"192.168.0.1", u"192.168.0.1"},
    {u"http://localhost/", u"localhost", 0, 1, u"localhost", u"localhost"},
    {u"example.com?x=1:2", u"example.com?x=1:2", 0, 0, u"example.com?x=1", u"example.com?x=1"},
    {u"about:blank", u"about:blank", 0, 0, u"about", u"about"},
};

TEST(UrlUtilTest, FixedUrlFullAndMainDomainChain) {
  for (const auto& [text, fixed, www, slash, fullDomain, mainDomain] : kUrlCases) {
    SCOPED_TRACE(ToUtf8(text));
    std::u16string url = text, full, main;
    int32_t hadWww = 0, hadSlash = 0;
    MakeFixedURL(url, &hadWww, &hadSlash);
    EXPECT_EQ(url, fixed);
    EXPECT_EQ(hadWww, www);
    EXPECT_EQ(hadSlash, slash);
    EXPECT_TRUE(GetFullDomain(url, &full));
    EXPECT_EQ(full, fullDomain);
    EXPECT_TRUE(GetMainDomain(full, &main));
    EXPECT_EQ(main, mainDomain);
  }
}

TEST(UrlUtilTest, MainDomainOfHost) {
  const TextPair cases[] = {
      {u"example.com", u"example.com"},           {u"www.example.com", u"example.com"},
      {u"a.b.example.com.cn", u"example.com.cn"}, {u"example.net.hk", u"example.net.hk"},
      {u"shop.example.cn", u"example.cn"},        {u"example.gov.cn", u"example.gov.cn"},
      {u"gov.cn", u"gov.cn"},                     {u"example.co.uk", u"co.uk"},
      {u"Mail.Example.ORG.HK", u"Example.ORG.HK"}, {u"example.info", u"example.info"},
      {u"192.168.0.1", u"192.168.0.1"},           {u"10.1.2.3.example.com", u"10.1.2.3.example.com"},
      {u"1.2.3", u"2.3"},                         {u"localhost", u"localhost"},
      // A suffix made of nothing but list entries leaves the host as it is.
      {u"com.cn", u"com.cn"},                     {u".com.cn", u".com.cn"},
      // The second-level list is only consulted under a country suffix.
      {u"a.example.com.uk", u"com.uk"},
      {u"", u""},  // false, as the only empty result
  };
  for (const auto& [host, expected] : cases) {
    std::u16string main = u"stale";
    EXPECT_EQ(GetMainDomain(host, &main), *expected != 0) << ToUtf8(host);
    EXPECT_EQ(main, expected);
  }
}

TEST(UrlUtilTest, DomainDynamicAndPathPredicates) {
  // The port stays in the main domain but not in the full domain.
  const TextFlag cases[] = {{u"example.com", true},  {u"EXAMPLE.com.CN", true},  {u"localhost", true},
                            {u"192.168.0.1", true},  {u"www.example.com", false}, {u"", false},
                            {u"news.example.com.cn", false}, {u"example.com:8080", false}};
  for (const auto& [domain, expected] : cases) EXPECT_EQ(IsMainDomain(domain), expected) << ToUtf8(domain);
  EXPECT_FALSE(IsMainDomain(static_cast<const char16_t*>(nullptr)));
  EXPECT_TRUE(IsMainDomain(std::u16string(u"example.org")));
  EXPECT_TRUE(IsSameFullDomain(u"Example.COM", u"example.com"));
  EXPECT_FALSE(IsSameFullDomain(u"www.example.com", u"example.com"));
  EXPECT_TRUE(IsSameMainDomain(u"www.example.com", u"NEWS.EXAMPLE.COM"));
  EXPECT_FALSE(IsSameMainDomain(u"example.com.cn", u"example.cn"));
  EXPECT_TRUE(IsSameMainDomain(u"", u""));
  EXPECT_TRUE(IsDynamicURL(u"example.com/a?b=1"));
  EXPECT_TRUE(IsDynamicURL(u"?"));
  EXPECT_FALSE(IsDynamicURL(u"example.com/a#b"));
  // An https URL keeps the "/" of its scheme, so without a path it is no path URL.
  const TextFlag paths[] = {{u"example.com", true}, {u"example.com/", true}, {u"example.com/a/", true},
                            {u"example.com/a", false}, {u"https://www.example.com", false}};
  for (const auto& [url, expected] : paths) EXPECT_EQ(IsPathURL(url), expected) << ToUtf8(url);
}

}  // namespace
}  // namespace corvane
