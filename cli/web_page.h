// web_page.h: the start page itself: one self-contained HTML document with
// its style and script, no request beyond its own server (no CDN, no web
// fonts). Every text from a site or a browser reaches the page through
// textContent, never as HTML: a site chooses its own title.

#ifndef CORVANE_CLI_WEB_PAGE_H_
#define CORVANE_CLI_WEB_PAGE_H_

namespace corvane::cli {

const char* StartPageHtml();

}  // namespace corvane::cli

#endif  // CORVANE_CLI_WEB_PAGE_H_
