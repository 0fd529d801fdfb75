// Ids that a host passes as text, through every operation of the managers
// that takes one: each text that reads as a 64-bit integer (blanks around
// it, a sign, leading zeros, 19 digits) names the row with that number,
// and any other text names none and gives the status of a text that is no
// number.

#include <functional>

#include "serving/seed_rows.h"
#include "serving/serving_host.h"

namespace corvane::test {
namespace {

constexpr char kMax[] = "9223372036854775807";

struct IdCase {
  std::u16string text;
  bool number;        // reads as a 64-bit integer
  const char* names;  // the row it names; empty for none
};

const std::vector<IdCase>& IdCases() {
  static const std::vector<IdCase> cases = {
      {u"2", true, "2"},
      {u" 2", true, "2"},
      {u"2 ", true, "2"},
      {u"\t2\r\n", true, "2"},
      {u"+2", true, "2"},
      {u"0002", true, "2"},
      {u" +0002 ", true, "2"},
      {u"-1", true, "-1"},
      {u" -01", true, "-1"},
      {u"9223372036854775807", true, kMax},
      {u"+09223372036854775807", true, kMax},
      {u"-9223372036854775808", true, ""},
      {u"-0", true, ""},
      {u"7", true, ""},
      {u"", false, ""},
      {u"   ", false, ""},
      {u"+", false, ""},
      {u"-", false, ""},
      {u"2x", false, ""},
      {u"2 2", false, ""},
      {u"+-2", false, ""},
      {u"--2", false, ""},
      {u"2-", false, ""},
      {u"0x2", false, ""},
      {u"2.0", false, ""},
      {u"1e1", false, ""},
      {u"9223372036854775808", false, ""},
      {u"-9223372036854775809", false, ""},
      {u"99999999999999999999", false, ""},
      {u"\uFF12", false, ""},  // a full-width digit
  };
  return cases;
}

// One operation that takes an id, with the table it works on.
struct IdTarget {
  const char* what;
  std::function<HRESULT(BSTR)> call;
  HRESULT forNoNumber;
  std::string reset;    // puts the table back before each case
  std::string touched;  // the ids of the rows that the call changed, joined by ","
};

class IdTextTest : public ServingTest {
 protected:
  void SetUp() override {
    ServingTest::SetUp();
    StartProvider();
    for (const char* id : {"1", "2", "-1", kMax}) {
      const std::string r = id;
      for (const char* table : {"TRecommendDomain", "TSubDomain"}) {
        m_db.Exec(std::string("insert into ") + table + "(rowid, Domain, MainDomain, LastVisitTime, Score, Hide, "
                  "T2Flag) values(" + r + ", 'd" + r + ".com', 'd" + r + ".com', 1, 100, 0, 0);");
      }
      m_db.Exec("insert into TRecommendURL(rowid, Name, URL, FixedURL, LastVisitTime, Domain, MainDomain, Weight, Hide, "
                "VisitCount, AvgVisitCount) values(" + r + ", 'U', 'http://u" + r + "/', 'u', 1, 'u', 'u', 100, 0, 1, 1);");
      m_db.Exec("insert into THistory values(" + r + ", 'H', 'http://h" + r +
                "/', 1, '2024.03.05 2 08:00:00.000', 154561, 0, 2);");
      m_db.Exec("insert into TFavorite(rowid, Name, URL, FixedURL, Path, HideDate) values(" + r + ", 'F', 'http://f" + r +
                "/', 'f', 'Bar', 0);");
    }
    m_common = Manager<ICommonUseURLsManager>(1, IID_ICommonUseURLsManager);
    m_commonUrls = Query<IURLsManager>(m_common.Get(), IID_IURLsManager);
    m_focus = Manager<IURLsManager>(2, IID_IURLsManager);
    m_history = Manager<IURLsManager>(3, IID_IURLsManager);
    m_favorites = Manager<IURLsManager>(4, IID_IURLsManager);
    ASSERT_TRUE(m_common && m_commonUrls && m_focus && m_history && m_favorites);
  }

  static std::string HiddenIds(const char* table, const char* column) {
    return std::string("select ifnull(group_concat(rowid), '') from (select rowid from ") + table + " where " + column +
           " != 0 order by rowid)";
  }

  std::vector<IdTarget> Targets() {
    const std::string focusRows = "delete from TFocusURL; insert into TFocusURL values(1, 'P', 'p1'), (2, 'P', 'p2'), "
                                  "(-1, 'P', 'p-1'), (" + std::string(kMax) + ", 'P', 'pmax');";
    const std::string focusGone = "select ifnull(group_concat(v), '') from (select column1 as v from (values (1), (2), "
                                  "(-1), (" + std::string(kMax) + ")) where column1 not in (select ID from TFocusURL) "
                                  "order by column1)";
    return {
        {"HideRecommendDomain", [&](BSTR t) { return m_common->HideRecommendDomain(t, 0); }, S_OK,
         "update TRecommendDomain set Hide = 0;", HiddenIds("TRecommendDomain", "Hide")},
        {"HideSubDomain", [&](BSTR t) { return m_common->HideSubDomain(t, 0x00010000); }, S_OK,
         "update TSubDomain set Hide = 0, Score = 100;", HiddenIds("TSubDomain", "Hide")},
        {"recommendation RemoveURL", [&](BSTR t) { return m_commonUrls->RemoveURL(t, 0); }, S_OK,
         "update TRecommendURL set Hide = 0;", HiddenIds("TRecommendURL", "Hide")},
        {"focus RemoveURL", [&](BSTR t) { return m_focus->RemoveURL(t, 0); }, E_FAIL, focusRows, focusGone},
        {"history RemoveURL", [&](BSTR t) { return m_history->RemoveURL(t, 0); }, E_FAIL,
         "update THistory set HideDate = 0;", HiddenIds("THistory", "HideDate")},
        {"favourite RemoveURL", [&](BSTR t) { return m_favorites->RemoveURL(t, 0); }, S_OK,
         "update TFavorite set HideDate = 0;", HiddenIds("TFavorite", "HideDate")},
    };
  }

  ComPtr<ICommonUseURLsManager> m_common;
  ComPtr<IURLsManager> m_commonUrls;
  ComPtr<IURLsManager> m_focus;
  ComPtr<IURLsManager> m_history;
  ComPtr<IURLsManager> m_favorites;
};

TEST_F(IdTextTest, TextThatReadsAsANumberNamesItsRowAndNothingElseDoes) {
  for (const IdTarget& target : Targets()) {
    for (const IdCase& entry : IdCases()) {
      // The favourite compares its rowid with the text as SQLite reads a
      // quoted value, which takes "2.0" for row 2 as well.
      if (std::string(target.what) == "favourite RemoveURL" && entry.text == u"2.0") continue;
      SCOPED_TRACE(testing::Message() << target.what << " with \""
                                      << std::string(entry.text.begin(), entry.text.end()) << "\"");
      m_db.Exec(target.reset);
      Bstr id(entry.text);
      EXPECT_EQ(target.call(id.Get()), entry.number ? S_OK : target.forNoNumber);
      EXPECT_EQ(m_db.Scalar(target.touched), entry.names);
    }
  }
}

TEST_F(IdTextTest, ANumberBeforeTheRebuildHideLowersTheScoreOfItsRow) {
  Bstr id(u" +0002 ");
  ASSERT_EQ(m_common->HideRecommendDomain(id.Get(), 0x00010000), S_OK);
  EXPECT_EQ(m_db.Scalar("select Hide || ':' || Score from TRecommendDomain where rowid = 2"), "2:70");
  EXPECT_EQ(m_db.Scalar("select count(*) from TRecommendDomain where Hide = 0 and Score = 100"), "3");
}

}  // namespace
}  // namespace corvane::test
