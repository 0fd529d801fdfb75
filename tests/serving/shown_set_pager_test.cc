// The pager must hand out exactly the rows that asking SQLite for each page,
// filtered by the shown set and cut at a growing offset, would give: the
// reference below does just that, and random listings compare the two.

#include "serving/shown_set_pager.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "store/sqlite_db.h"

namespace corvane {
namespace {

// The positions in the listing of the rows shown, in order, and the shown
// set after the stage.
using StageRun = std::pair<std::vector<int>, ShownDomainMap>;

// The stage as it would run on one query per page.
StageRun ReferenceStage(const std::vector<std::u16string>& listing, ShownDomainMap shown, uint32_t pageSize,
                        uint32_t uCount) {
  std::vector<int> rows;
  for (size_t offset = 0;; offset += pageSize) {
    std::vector<int> page;
    size_t eligible = 0;
    for (size_t i = 0; i < listing.size() && page.size() < pageSize; ++i) {
      if (shown.count(listing[i]) != 0) continue;
      if (eligible++ >= offset) page.push_back(static_cast<int>(i));
    }
    uint32_t seen = 0;
    for (int row : page) {
      if (rows.size() >= uCount) break;
      ++seen;
      if (shown.count(listing[row]) != 0) continue;
      shown[listing[row]] = 1;
      rows.push_back(row);
    }
    if (seen == 0 || rows.size() >= uCount) break;
  }
  return {rows, shown};
}

class ShownSetPagerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(m_db.Open(u":memory:"));
    ASSERT_TRUE(m_db.Exec(u"create table L(Position INTEGER, MainDomain TEXT);"));
  }

  void Fill(const std::vector<std::u16string>& listing) {
    ASSERT_TRUE(m_db.Exec(u"delete from L;"));
    StatementPtr insert = m_db.Prepare(u"insert into L values(?, ?);");
    ASSERT_TRUE(insert);
    for (size_t i = 0; i < listing.size(); ++i) {
      ASSERT_TRUE(insert->BindInt(0, static_cast<int32_t>(i)) && insert->BindText16(1, listing[i]) &&
                  insert->Execute());
    }
  }

  // The stage as the listing runs it, through the pager.
  StageRun PagedStage(ShownDomainMap shown, uint32_t pageSize, uint32_t uCount) {
    std::vector<int> rows;
    StatementPtr stmt = m_db.Prepare(u"select Position, MainDomain from L order by Position;");
    EXPECT_TRUE(stmt);
    if (!stmt) return {};
    CShownSetPager pager(stmt.get(), 1, pageSize, &shown);
    while (rows.size() < uCount && pager.NextPage()) {
      while (rows.size() < uCount && pager.NextRow()) {
        if (shown.count(pager.MainDomain()) != 0) continue;
        shown[pager.MainDomain()] = 1;
        pager.NoteShown();
        rows.push_back(stmt->ColumnInt(0));
      }
    }
    return {rows, shown};
  }

  CSqliteDB m_db;
};

TEST_F(ShownSetPagerTest, RandomListingsGiveThePagesOfOneQueryPerPage) {
  std::mt19937 random(20261123);
  for (int round = 0; round < 400; ++round) {
    const size_t length = random() % 120;
    const size_t domains = 1 + random() % 30;
    std::vector<std::u16string> listing;
    for (size_t i = 0; i < length; ++i) listing.push_back(u"d" + std::u16string(1, u'a' + random() % domains));
    ShownDomainMap shown;
    for (size_t i = 0; i < 3; ++i) {
      if (random() % 2 == 0) shown[u"d" + std::u16string(1, u'a' + random() % domains)] = 1;
    }
    const uint32_t pageSize = 1 + random() % 6;
    const uint32_t uCount = 1 + random() % 40;
    Fill(listing);
    ASSERT_EQ(PagedStage(shown, pageSize, uCount), ReferenceStage(listing, shown, pageSize, uCount))
        << "round " << round << ", page " << pageSize << ", count " << uCount;
  }
}

}  // namespace
}  // namespace corvane
