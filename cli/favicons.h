// favicons.h: a site's icon, read from the browsers' own favicon stores.
//
// Chromium-family profiles keep icons in "Favicons" (icon_mapping from a
// page URL to an icon, favicon_bitmaps with the images), Firefox-family
// ones in "favicons.sqlite" (moz_pages_w_icons, moz_icons_to_pages,
// moz_icons). Both are read from private copies, as the history is, taken
// once when the store loads. The icon of a host is the widest one of any of
// its pages, http or https; Firefox's root icon (favicon.ico) when no page
// has one.

#ifndef CORVANE_CLI_FAVICONS_H_
#define CORVANE_CLI_FAVICONS_H_

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "harvest/private_copy.h"

namespace corvane::cli {

class FaviconStore {
 public:
  // Copies the favicon files of every profile found.
  void Load();
  // The image and its MIME type; false when no profile has an icon of an
  // image type a page may show.
  [[nodiscard]] bool Find(const std::string& host, std::string* lpImage, std::string* lpType);

 private:
  struct Source {
    bool firefox;
    std::unique_ptr<harvest::PrivateCopy> copy;
  };
  std::mutex m_lock;
  std::vector<Source> m_sources;
};

// The MIME type of an image by its first bytes (PNG, ICO, GIF, JPEG, WebP,
// SVG); empty for anything else.
std::string ImageType(const std::string& bytes);

}  // namespace corvane::cli

#endif  // CORVANE_CLI_FAVICONS_H_
