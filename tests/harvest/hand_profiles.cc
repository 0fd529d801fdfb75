#include "harvest/hand_profiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace corvane::testing {

namespace fs = std::filesystem;

void ExecSql(sqlite3* db, const std::string& sql) {
  char* message = nullptr;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
    ADD_FAILURE() << (message != nullptr ? message : "no database") << " in " << sql;
  }
  sqlite3_free(message);
}

std::string HandChromiumHistory(const std::string& home, const std::string& rows) {
  std::string folder = home + "/.config/chromium/Default";
  fs::create_directories(folder);
  std::ofstream(home + "/.config/chromium/Local State") << R"({"profile":{"last_used":"Default"}})";
  std::string path = folder + "/History";
  fs::remove(path);
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  ExecSql(db,
          "create table urls(id INTEGER PRIMARY KEY, url LONGVARCHAR, title LONGVARCHAR, visit_count INTEGER, "
          "typed_count INTEGER, last_visit_time INTEGER, hidden INTEGER);"
          "create table visits(id INTEGER PRIMARY KEY, url INTEGER, visit_time INTEGER, from_visit INTEGER, "
          "transition INTEGER, segment_id INTEGER, visit_duration INTEGER, originator_cache_guid TEXT);"
          "create table visit_source(id INTEGER PRIMARY KEY, source INTEGER NOT NULL);" +
              rows);
  sqlite3_close(db);
  return path;
}

std::string HandFirefoxPlaces(const std::string& home, const std::string& rows) {
  std::string root = home + "/.mozilla/firefox";
  fs::create_directories(root + "/hand.default");
  std::ofstream(root + "/profiles.ini", std::ios::trunc) << "[Profile0]\nName=hand\nIsRelative=1\nPath=hand.default\n";
  std::string path = root + "/hand.default/places.sqlite";
  for (const char* suffix : {"", "-wal", "-shm"}) fs::remove(path + suffix);
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  ExecSql(db,
          "PRAGMA journal_mode=WAL;"
          "create table moz_places(id INTEGER PRIMARY KEY, url LONGVARCHAR, title LONGVARCHAR, rev_host LONGVARCHAR, "
          "visit_count INTEGER DEFAULT 0, hidden INTEGER DEFAULT 0 NOT NULL, typed INTEGER DEFAULT 0 NOT NULL);"
          "create table moz_historyvisits(id INTEGER PRIMARY KEY, from_visit INTEGER, place_id INTEGER, visit_date "
          "INTEGER, visit_type INTEGER, session INTEGER);"
          "create table moz_bookmarks(id INTEGER PRIMARY KEY, type INTEGER, fk INTEGER DEFAULT NULL, parent INTEGER, "
          "position INTEGER, title LONGVARCHAR, guid TEXT);"
          "insert into moz_bookmarks(id, type, parent, position, title, guid) values (1, 2, 0, 0, '', 'root________'),"
          "(2, 2, 1, 0, 'menu', 'menu________'), (3, 2, 1, 1, 'toolbar', 'toolbar_____');" +
              rows);
  sqlite3_close(db);
  return path;
}

}  // namespace corvane::testing
