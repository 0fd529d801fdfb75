#include "cli/favicons.h"

#include "harvest/profile_locator.h"

namespace corvane::cli {
namespace {

constexpr char kChromiumIcon[] =
    "select b.image_data from icon_mapping m join favicon_bitmaps b on b.icon_id = m.icon_id where (m.page_url >= ?1 "
    "and m.page_url < ?2) or (m.page_url >= ?3 and m.page_url < ?4) order by b.width desc limit 1";
constexpr char kFirefoxIcon[] =
    "select i.data from moz_pages_w_icons p join moz_icons_to_pages t on t.page_id = p.id join moz_icons i on i.id = "
    "t.icon_id where (p.page_url >= ?1 and p.page_url < ?2) or (p.page_url >= ?3 and p.page_url < ?4) order by "
    "i.width desc limit 1";
constexpr char kFirefoxRootIcon[] =
    "select data from moz_icons where root = 1 and icon_url in (?1 || 'favicon.ico', ?3 || 'favicon.ico') order by "
    "width desc limit 1";

// The first image of a query whose parameters are the bounds of the pages
// of the host: "https://host/" up to "https://host0" ('0' follows '/').
std::string FirstImage(const harvest::PrivateCopy& copy, const char* sql, const std::string& host) {
  harvest::Statement stmt = copy.Prepare(sql);
  if (!stmt) return std::string();
  const std::string bounds[] = {"https://" + host + "/", "https://" + host + "0", "http://" + host + "/",
                                "http://" + host + "0"};
  for (int i = 0; i < 4; ++i) sqlite3_bind_text(stmt.get(), i + 1, bounds[i].c_str(), -1, SQLITE_TRANSIENT);
  if (sqlite3_step(stmt.get()) != SQLITE_ROW) return std::string();
  const void* data = sqlite3_column_blob(stmt.get(), 0);
  return data == nullptr ? std::string()
                         : std::string(static_cast<const char*>(data), static_cast<size_t>(sqlite3_column_bytes(stmt.get(), 0)));
}

}  // namespace

std::string ImageType(const std::string& bytes) {
  auto starts = [&](std::string_view magic) { return bytes.compare(0, magic.size(), magic) == 0; };
  if (starts("\x89PNG\r\n\x1a\n")) return "image/png";
  if (starts(std::string_view("\0\0\1\0", 4))) return "image/x-icon";
  if (starts("GIF8")) return "image/gif";
  if (starts("\xff\xd8\xff")) return "image/jpeg";
  if (starts("RIFF") && bytes.compare(8, 4, "WEBP") == 0) return "image/webp";
  if (starts("<svg") || starts("<?xml")) return "image/svg+xml";
  return std::string();
}

void FaviconStore::Load() {
  std::lock_guard<std::mutex> hold(m_lock);
  m_sources.clear();
  for (const harvest::BrowserProfile& profile : harvest::FindProfiles()) {
    const bool firefox = profile.product->family == harvest::Family::kFirefox;
    auto copy = std::make_unique<harvest::PrivateCopy>();
    if (copy->Open(profile.folder + (firefox ? "/favicons.sqlite" : "/Favicons"))) {
      m_sources.push_back(Source{firefox, std::move(copy)});
    }
  }
}

bool FaviconStore::Find(const std::string& host, std::string* lpImage, std::string* lpType) {
  std::lock_guard<std::mutex> hold(m_lock);
  for (const Source& source : m_sources) {
    std::string image = FirstImage(*source.copy, source.firefox ? kFirefoxIcon : kChromiumIcon, host);
    if (image.empty() && source.firefox) image = FirstImage(*source.copy, kFirefoxRootIcon, host);
    *lpType = ImageType(image);
    if (lpType->empty()) continue;
    *lpImage = std::move(image);
    return true;
  }
  return false;
}

}  // namespace corvane::cli
