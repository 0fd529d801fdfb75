// schema.h: the create statements of every table of the store, kept as
// fixed texts. Tables that are rebuilt at run time take their names from
// here too, so that no name ever comes from outside the code.

#ifndef CORVANE_STORE_SCHEMA_H_
#define CORVANE_STORE_SCHEMA_H_

namespace corvane::schema {

// Tables that Open creates, in this order.
inline constexpr char16_t kCreateHistory[] =
    u"create table THistory(HID INTEGER PRIMARY KEY ASC AUTOINCREMENT,Name TEXT,URL TEXT,VisitCount INTEGER,"
    u"VisitTime TEXT,VisitDate INTEGER,HideDate INTEGER,Browser INTEGER);";
inline constexpr char16_t kCreateFavorite[] =
    u"create table TFavorite(Name TEXT,URL TEXT,FixedURL TEXT,Path TEXT,HideDate INTEGER);";
inline constexpr char16_t kCreateFocusURL[] =
    u"create table TFocusURL(ID INTEGER PRIMARY KEY ASC AUTOINCREMENT,Name TEXT,URL TEXT);";
inline constexpr char16_t kCreateIEHistory[] =
    u"create table TIEHistory(HID INTEGER PRIMARY KEY ASC AUTOINCREMENT,Name TEXT,URL TEXT,VisitCount INTEGER,"
    u"VisitTime TEXT,VisitDate INTEGER,HideDate INTEGER,VisitTimeLong INTEGER);";
inline constexpr char16_t kCreatePreparedURL[] =
    u"create table TPreparedURL(DayIndex INTEGER,Name TEXT,URL TEXT,OriginalURL TEXT,VisitCount INTEGER,"
    u"VisitTime TEXT,VisitTimeLong INTEGER);";
inline constexpr char16_t kCreateWhiteList[] = u"create table TWhiteList(Name TEXT,MainDomain TEXT,Domain TEXT,SubName TEXT);";
inline constexpr char16_t kCreateBlackList[] = u"create table TBlackList(Name TEXT,MainDomain TEXT,Domain TEXT,SubName TEXT);";
inline constexpr char16_t kCreateSubList[] = u"create table TSubList(Name TEXT,MainDomain TEXT,Domain TEXT,SubName TEXT);";
inline constexpr char16_t kCreateRecommendDomain[] =
    u"create table TRecommendDomain(Domain TEXT,MainDomain TEXT,LastVisitTime INTEGER,Score INTEGER,Hide INTEGER,"
    u"T2Flag INTEGER);";

// Tables created at run time.
inline constexpr char16_t kCreateRecommendURL[] =
    u"create table TRecommendURL(Name TEXT,URL TEXT,FixedURL TEXT,LastVisitTime INTEGER,Domain TEXT,MainDomain TEXT,"
    u"Weight INTEGER,Hide INTEGER,VisitCount INTEGER,AvgVisitCount INTEGER);";
inline constexpr char16_t kCreateRecentHistory[] =
    u"create table TRecentHistory(ID INTEGER,Name TEXT,URL TEXT,FixedURL TEXT,LastVisitTime INTEGER,Domain TEXT,"
    u"MainDomain TEXT,Weight INTEGER,VisitCount INTEGER);";
inline constexpr char16_t kCreateRecentHistoryMatchTemplate[] =
    u"create table %s(ID INTEGER,Name TEXT,URL TEXT,FixedURL TEXT,LastVisitTime INTEGER,Domain TEXT,MainDomain TEXT,"
    u"Weight INTEGER,VisitCount INTEGER,Match INTEGER);";
inline constexpr char16_t kCreateRecentDomain[] =
    u"create table TRecentDomain(Domain TEXT,MainDomain TEXT,LastVisitTime INTEGER,Score INTEGER,Name TEXT);";
inline constexpr char16_t kCreateDomainTempTemplate[] = u"CREATE TABLE %s (FullDomainName TEXT)";
inline constexpr char16_t kCreateNames[] = u"create table TNames(Domain TEXT,Name TEXT);";
inline constexpr char16_t kCreateETableTemplate[] =
    u"create table %s(Name TEXT,URL TEXT,OriginalURL TEXT,LastVisitTime TEXT,VisitCount INTEGER,Score INTEGER);";
inline constexpr char16_t kCreateHTableTemplate[] =
    u"create table %s(Name TEXT,URL TEXT,OriginalURL TEXT,MainDomainName TEXT,FullDomainName TEXT,"
    u"LastVisitTime TEXT,VisitCount INTEGER,AvgVisitCount INTEGER,Score INTEGER);";

// Table names.
inline constexpr char16_t kHistory[] = u"THistory";
inline constexpr char16_t kFavorite[] = u"TFavorite";
inline constexpr char16_t kFocusURL[] = u"TFocusURL";
inline constexpr char16_t kIEHistory[] = u"TIEHistory";
inline constexpr char16_t kPreparedURL[] = u"TPreparedURL";
inline constexpr char16_t kWhiteList[] = u"TWhiteList";
inline constexpr char16_t kBlackList[] = u"TBlackList";
inline constexpr char16_t kSubList[] = u"TSubList";
inline constexpr char16_t kNames[] = u"TNames";
inline constexpr char16_t kRecommendDomain[] = u"TRecommendDomain";
inline constexpr char16_t kRecommendURL[] = u"TRecommendURL";
inline constexpr char16_t kSubDomain[] = u"TSubDomain";
inline constexpr char16_t kZS[] = u"TZS";
inline constexpr char16_t kRecentHistory[] = u"TRecentHistory";
inline constexpr char16_t kRecentHistoryMatch[] = u"TRecentHistory_Match";
inline constexpr char16_t kRecentDomain[] = u"TRecentDomain";
inline constexpr char16_t kRecentDomainTemp[] = u"TRecentDomainTemp";
inline constexpr char16_t kHistoryDomainTemp[] = u"HistoryDomainTemp";
inline constexpr char16_t kZDomainTemp[] = u"ZDomainTemp";
// The pipeline's tables, in the bracketed form in which it passes them.
inline constexpr char16_t kE2[] = u"[e2]";
inline constexpr char16_t kE3[] = u"[e3]";
inline constexpr char16_t kJ1[] = u"[j1]";
inline constexpr char16_t kH2[] = u"[h2]";
inline constexpr char16_t kZ[] = u"[z]";

}  // namespace corvane::schema

#endif  // CORVANE_STORE_SCHEMA_H_
