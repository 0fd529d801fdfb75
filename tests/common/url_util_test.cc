#include "common/url_util.h"

#include <gtest/gtest.h>

#include <string>

#include "common/utf.h"

namespace corvane {
namespace {

struct UrlCase {
  const char16_t* url;
  const char16_t* fixed;
  int32_t hadWww;
  int32_t hadSlash;
  const char16_t* fullDomain;
  const char16_t* mainDomain;
};

// A URL through the whole chain: fixed form, its host, the host's main domain.
const UrlCase kUrlCases[] = {
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
  for (const UrlCase& c : kUrlCases) {
    SCOPED_TRACE(ToUtf8(c.url));
    std::u16string url = c.url;
    int32_t hadWww = 0;
    int32_t hadSlash = 0;
    MakeFixedURL(url, &hadWww, &hadSlash);
    EXPECT_EQ(url, c.fixed);
    EXPECT_EQ(hadWww, c.hadWww);
    EXPECT_EQ(hadSlash, c.hadSlash);

    std::u16string full;
    EXPECT_TRUE(GetFullDomain(url, &full));
    EXPECT_EQ(full, c.fullDomain);

    std::u16string main;
    EXPECT_TRUE(GetMainDomain(full, &main));
    EXPECT_EQ(main, c.mainDomain);
  }
}

struct MainDomainCase {
  const char16_t* host;
  const char16_t* mainDomain;
};

const MainDomainCase kMainDomainCases[] = {
    {u"example.com", u"example.com"},
    {u"www.example.com", u"example.com"},
    {u"a.b.example.com.cn", u"example.com.cn"},
    {u"example.net.hk", u"example.net.hk"},
    {u"shop.example.cn", u"example.cn"},
    {u"example.gov.cn", u"example.gov.cn"},
    {u"gov.cn", u"gov.cn"},
    {u"example.co.uk", u"co.uk"},
    {u"Mail.Example.ORG.HK", u"Example.ORG.HK"},
    {u"example.info", u"example.info"},
    {u"192.168.0.1", u"192.168.0.1"},
    {u"10.1.2.3.example.com", u"10.1.2.3.example.com"},
    {u"1.2.3", u"2.3"},
    {u"localhost", u"localhost"},
    // A suffix made of nothing but list entries leaves the host as it is.
    {u"com.cn", u"com.cn"},
    {u".com.cn", u".com.cn"},
    // The second-level list is only consulted under a country suffix.
    {u"a.example.com.uk", u"com.uk"},
};

TEST(UrlUtilTest, MainDomainOfHost) {
  for (const MainDomainCase& c : kMainDomainCases) {
    SCOPED_TRACE(ToUtf8(c.host));
    std::u16string main = u"stale";
    EXPECT_TRUE(GetMainDomain(c.host, &main));
    EXPECT_EQ(main, c.mainDomain);
  }
}

TEST(UrlUtilTest, MainDomainOfEmptyHostIsEmptyAndFalse) {
  std::u16string main = u"stale";
  EXPECT_FALSE(GetMainDomain(u"", &main));
  EXPECT_EQ(main, u"");
}

TEST(UrlUtilTest, MakeFixedUrlRemovesOnlyOnePrefix) {
  std::u16string url = u"http://www.www.example.com";
  int32_t hadWww = 0;
  int32_t hadSlash = 0;
  MakeFixedURL(url, &hadWww, &hadSlash);
  EXPECT_EQ(url, u"www.example.com");
  // A second call takes the next "www." off: callers run it once per URL.
  MakeFixedURL(url);
  EXPECT_EQ(url, u"example.com");
}

TEST(UrlUtilTest, MakeFixedUrlNeverClearsFlags) {
  std::u16string url = u"example.com";
  int32_t hadWww = 1;
  int32_t hadSlash = 1;
  MakeFixedURL(url, &hadWww, &hadSlash);
  EXPECT_EQ(url, u"example.com");
  EXPECT_EQ(hadWww, 1);
  EXPECT_EQ(hadSlash, 1);
}

TEST(UrlUtilTest, MakeFixedUrlOfBarePrefixesGivesEmptyText) {
  for (const char16_t* text : {u"", u"http://", u"http://www.", u"www.", u"/"}) {
    SCOPED_TRACE(ToUtf8(text));
    std::u16string url = text;
    MakeFixedURL(url);
    EXPECT_EQ(url, u"");
  }
}

TEST(UrlUtilTest, RestoreUrlRebuildsFromFlags) {
  std::u16string out;
  RestoreURL(u"example.com", 0, 0, &out);
  EXPECT_EQ(out, u"http://example.com");
  RestoreURL(u"example.com/a", 1, 1, &out);
  EXPECT_EQ(out, u"http://www.example.com/a/");
  // A fixed URL that kept its scheme is whole: nothing goes in front.
  RestoreURL(u"https://www.example.com", 0, 1, &out);
  EXPECT_EQ(out, u"https://www.example.com/");
  RestoreURL(u"ftp://files.example.com/a", 0, 0, &out);
  EXPECT_EQ(out, u"ftp://files.example.com/a");
  // "://" behind a "/" is no scheme.
  RestoreURL(u"example.com/r?u=https://x", 0, 0, &out);
  EXPECT_EQ(out, u"http://example.com/r?u=https://x");
}

TEST(UrlUtilTest, RestoreOfFixedFormRoundTrips) {
  for (const char16_t* original : {u"http://example.com", u"http://www.example.com/a/", u"http://example.com//",
                                   u"https://www.example.com/", u"https://example.com/a?b=1"}) {
    SCOPED_TRACE(ToUtf8(original));
    std::u16string url = original;
    int32_t hadWww = 0;
    int32_t hadSlash = 0;
    MakeFixedURL(url, &hadWww, &hadSlash);
    std::u16string restored;
    RestoreURL(url, hadWww, hadSlash, &restored);
    EXPECT_EQ(restored, original);
  }
}

TEST(UrlUtilTest, FullDomainEdgeCases) {
  const MainDomainCase cases[] = {
      {u"a/b://c", u"a"},                 // "/" before "://": no scheme
      {u":8080", u":8080"},               // ":" at position 0 is no port
      {u"example.com?q=1", u"example.com?q=1"},
      {u"file:///C:/a.htm", u""},         // no host behind the scheme
      {u"http://example.com#frag", u"example.com#frag"},
      {u"example.com..", u"example.com."},  // only one trailing dot goes
      {u"", u""},
  };
  for (const MainDomainCase& c : cases) {
    SCOPED_TRACE(ToUtf8(c.host));
    std::u16string full = u"stale";
    EXPECT_TRUE(GetFullDomain(c.host, &full));
    EXPECT_EQ(full, c.mainDomain);
  }
}

TEST(UrlUtilTest, MainDomainOfUrlLeavesOutputWithoutHost) {
  std::u16string main = u"kept";
  GetMainDomainOfURL(u"file:///C:/a.htm", &main);
  EXPECT_EQ(main, u"kept");
  GetMainDomainOfURL(u"https://news.example.com.cn:443/x", &main);
  EXPECT_EQ(main, u"example.com.cn");
}

TEST(UrlUtilTest, IsMainDomain) {
  EXPECT_TRUE(IsMainDomain(u"example.com"));
  EXPECT_TRUE(IsMainDomain(u"EXAMPLE.com.CN"));
  EXPECT_TRUE(IsMainDomain(u"localhost"));
  EXPECT_TRUE(IsMainDomain(u"192.168.0.1"));
  EXPECT_FALSE(IsMainDomain(u"www.example.com"));
  EXPECT_FALSE(IsMainDomain(u"news.example.com.cn"));
  EXPECT_FALSE(IsMainDomain(u""));
  EXPECT_FALSE(IsMainDomain(static_cast<const char16_t*>(nullptr)));
  // Both halves come from the same input: the port stays in the main domain
  // but not in the full domain.
  EXPECT_FALSE(IsMainDomain(u"example.com:8080"));
  EXPECT_TRUE(IsMainDomain(std::u16string(u"example.org")));
}

TEST(UrlUtilTest, SameFullAndMainDomain) {
  EXPECT_TRUE(IsSameFullDomain(u"Example.COM", u"example.com"));
  EXPECT_FALSE(IsSameFullDomain(u"www.example.com", u"example.com"));
  EXPECT_FALSE(IsSameFullDomain(u"example.com", u"example.co"));
  EXPECT_TRUE(IsSameMainDomain(u"www.example.com", u"NEWS.EXAMPLE.COM"));
  EXPECT_TRUE(IsSameMainDomain(u"a.example.com.cn", u"example.com.cn"));
  EXPECT_FALSE(IsSameMainDomain(u"example.com.cn", u"example.cn"));
  EXPECT_FALSE(IsSameMainDomain(u"example.com", u"example.org"));
  EXPECT_TRUE(IsSameMainDomain(u"", u""));
}

TEST(UrlUtilTest, DynamicAndPathUrls) {
  EXPECT_TRUE(IsDynamicURL(u"example.com/a?b=1"));
  EXPECT_TRUE(IsDynamicURL(u"?"));
  EXPECT_FALSE(IsDynamicURL(u"example.com/a#b"));

  EXPECT_TRUE(IsPathURL(u"example.com"));
  EXPECT_TRUE(IsPathURL(u"example.com/"));
  EXPECT_TRUE(IsPathURL(u"example.com/a/"));
  EXPECT_FALSE(IsPathURL(u"example.com/a"));
  // An https URL keeps the "/" of its scheme, so without a path it is no
  // path URL.
  EXPECT_FALSE(IsPathURL(u"https://www.example.com"));
}

}  // namespace
}  // namespace corvane
