#include "cli/web_server.h"

#include <httplib.h>
#include <json/reader.h>
#include <json/writer.h>

#include <mutex>

#include "cli/data_folder.h"
#include "cli/explain.h"
#include "cli/favicons.h"
#include "cli/output.h"
#include "cli/row_actions.h"
#include "cli/row_ids.h"
#include "cli/session.h"
#include "cli/time_text.h"
#include "cli/web_guard.h"
#include "cli/web_page.h"

namespace corvane::cli {
namespace {

constexpr size_t kMaxBody = 64 * 1024;
constexpr uint32_t kMaxRows = 100000;

uint32_t CountParam(const httplib::Request& request, const char* name, uint32_t fallback) {
  if (!request.has_param(name)) return fallback;
  const std::string text = request.get_param_value(name);
  if (text.empty() || text.size() > 6 || text.find_first_not_of("0123456789") != std::string::npos) return fallback;
  return std::min<uint32_t>(static_cast<uint32_t>(std::stoul(text)), kMaxRows);
}

void SendJson(httplib::Response& response, const Json::Value& document, int status = 200) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  response.status = status;
  response.set_content(Json::writeString(builder, document), "application/json; charset=utf-8");
}

void SendError(httplib::Response& response, int status, const std::string& message) {
  Json::Value document(Json::objectValue);
  document["ok"] = false;
  document["error"] = message;
  SendJson(response, document, status);
}

// The body as a JSON object; false with a 400 sent when it is none.
bool ReadBody(const httplib::Request& request, httplib::Response& response, Json::Value* lpBody) {
  Json::CharReaderBuilder builder;
  std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  std::string errors;
  if (reader->parse(request.body.data(), request.body.data() + request.body.size(), lpBody, &errors) &&
      lpBody->isObject()) {
    return true;
  }
  SendError(response, 400, "the body is no JSON object");
  return false;
}

// The history days with the heading a person reads beside the component's
// own label.
Json::Value DaysForPage(const std::vector<DayGroup>& days) {
  Json::Value list = DaysJson(days);
  const std::string today = TodayDate();
  for (Json::Value& day : list) day["heading"] = DayHeading(day["date"].asString(), today, day["label"].asString());
  return list;
}

// Rows [page * n, page * n + n) of the history, across its days.
std::vector<DayGroup> HistoryPage(std::vector<DayGroup> days, uint32_t n, uint32_t page) {
  size_t skip = static_cast<size_t>(page) * n;
  for (DayGroup& day : days) {
    const size_t dropped = std::min(skip, day.visits.size());
    day.visits.erase(day.visits.begin(), day.visits.begin() + static_cast<std::ptrdiff_t>(dropped));
    skip -= dropped;
  }
  std::erase_if(days, [](const DayGroup& day) { return day.visits.empty(); });
  return days;
}

}  // namespace

struct StartPageServer::State {
  httplib::Server server;
  ProviderSession session;
  std::mutex lock;  // one request at a time on the session
  FaviconStore icons;
  std::string token;
  int port = 0;

  void Routes();
  bool Guard(const httplib::Request& request, httplib::Response& response);
  void Action(const httplib::Request& request, httplib::Response& response, const std::string& kind);
};

bool StartPageServer::State::Guard(const httplib::Request& request, httplib::Response& response) {
  RequestFacts facts{request.method, request.get_header_value("Host"), request.get_header_value("Origin"),
                     request.get_header_value("Cookie"), request.get_param_value("token")};
  switch (Judge(facts, token, port)) {
    case Verdict::kAllow:
      return true;
    case Verdict::kAllowAndSetCookie:
      // The token leaves the address bar and the browser's history at once.
      response.set_header("Set-Cookie", TokenCookie(token));
      response.set_redirect(request.path);
      return false;
    case Verdict::kForbidden:
      SendError(response, 403, "forbidden: open the address that 'corvane serve' printed");
      return false;
  }
  return false;
}

void StartPageServer::State::Action(const httplib::Request& request, httplib::Response& response,
                                    const std::string& kind) {
  Json::Value body(Json::objectValue);
  if (kind != "update" && !ReadBody(request, response, &body)) return;
  std::lock_guard<std::mutex> hold(lock);
  std::string what, error;
  HRESULT hr = S_OK;
  if (kind == "pin") {
    hr = PinUrl(session, body["url"].asString(), body["name"].asString(), &what, &error);
  } else if (kind == "unpin") {
    RowKind row = RowKind::kDomain;
    uint32_t number = 0;
    const bool pin = ParseRowId(body["id"].asString(), &row, &number) && row == RowKind::kPin;
    hr = pin ? session.RemovePin(std::to_string(number), true) : E_INVALIDARG;
    if (!pin) error = "unpin takes the row ID of a pin, such as p2";
    what = "unpinned";
  } else if (kind == "hide") {
    hr = HideRow(session, body["id"].asString(), body["untilRebuild"].asBool(), &what, &error);
  } else {
    hr = session.ForceUpdate();
    icons.Load();
    what = "updated";
  }
  if (FAILED(hr)) {
    SendError(response, hr == E_INVALIDARG ? 400 : 409, error.empty() ? session.Error() : error);
    return;
  }
  Json::Value document(Json::objectValue);
  document["ok"] = true;
  document["done"] = what;
  SendJson(response, document);
}

void StartPageServer::State::Routes() {
  server.set_payload_max_length(kMaxBody);
  // A browser keeps several connections open; each holds a thread while it
  // is kept alive, so a pool of a few threads and a short keep-alive keep a
  // new request from waiting for an idle connection to time out. The
  // session lock lets one request at a time reach the component.
  server.new_task_queue = [] { return new httplib::ThreadPool(8); };
  server.set_keep_alive_timeout(1);
  server.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
    return Guard(request, response) ? httplib::Server::HandlerResponse::Unhandled
                                    : httplib::Server::HandlerResponse::Handled;
  });
  server.Get("/", [](const httplib::Request&, httplib::Response& response) {
    response.set_header("Content-Security-Policy", "default-src 'none'; img-src 'self'; style-src 'unsafe-inline'; "
                                                   "script-src 'unsafe-inline'; connect-src 'self'");
    response.set_content(StartPageHtml(), "text/html; charset=utf-8");
  });
  server.Get("/api/sites", [this](const httplib::Request& request, httplib::Response& response) {
    std::lock_guard<std::mutex> hold(lock);
    std::vector<SiteRecord> sites;
    if (FAILED(ListSitesWithPins(session, CountParam(request, "n", 40), &sites))) return SendError(response, 500, session.Error());
    SendJson(response, SitesJson(sites));
  });
  server.Get("/api/recent", [this](const httplib::Request& request, httplib::Response& response) {
    std::lock_guard<std::mutex> hold(lock);
    std::vector<SiteRecord> sites;
    if (FAILED(session.ListRecent(std::max(1u, CountParam(request, "n", 10)), &sites))) {
      return SendError(response, 500, session.Error());
    }
    SendJson(response, RecentJson(sites));
  });
  server.Get("/api/history", [this](const httplib::Request& request, httplib::Response& response) {
    std::lock_guard<std::mutex> hold(lock);
    const uint32_t n = std::max(1u, CountParam(request, "n", 50)), page = CountParam(request, "page", 0);
    std::vector<DayGroup> days;
    if (FAILED(session.ListHistory(std::min(kMaxRows, (page + 1) * n), std::string(), &days))) {
      return SendError(response, 500, session.Error());
    }
    SendJson(response, DaysForPage(HistoryPage(std::move(days), n, page)));
  });
  server.Get("/api/search", [this](const httplib::Request& request, httplib::Response& response) {
    std::lock_guard<std::mutex> hold(lock);
    std::vector<DayGroup> days;
    const std::string text = request.get_param_value("q");
    if (!text.empty() && FAILED(session.ListHistory(CountParam(request, "n", 200), text, &days))) {
      return SendError(response, 500, session.Error());
    }
    SendJson(response, DaysForPage(days));
  });
  server.Get("/api/favorites", [this](const httplib::Request&, httplib::Response& response) {
    std::lock_guard<std::mutex> hold(lock);
    std::vector<UrlRecord> favorites;
    if (FAILED(session.ListFavorites(0, &favorites))) return SendError(response, 500, session.Error());
    SendJson(response, UrlsJson(favorites, RowKind::kFavorite));
  });
  server.Get("/api/explain", [](const httplib::Request& request, httplib::Response& response) {
    Json::Value facts, document(Json::objectValue);
    std::vector<std::string> lines;
    std::string error;
    if (!ExplainTarget(request.get_param_value("target"), &facts, &lines, &error)) {
      return SendError(response, 404, error);
    }
    document["lines"] = Json::Value(Json::arrayValue);
    for (const std::string& line : lines) document["lines"].append(line);
    document["facts"] = facts;
    SendJson(response, document);
  });
  server.Get("/api/favicon", [this](const httplib::Request& request, httplib::Response& response) {
    std::string image, type;
    if (!icons.Find(request.get_param_value("host"), &image, &type)) return SendError(response, 404, "no icon");
    response.set_header("Cache-Control", "private, max-age=86400");
    response.set_content(image, type.c_str());
  });
  for (const char* kind : {"pin", "unpin", "hide", "update"}) {
    server.Post(std::string("/api/") + kind, [this, kind](const httplib::Request& request, httplib::Response& response) {
      Action(request, response, kind);
    });
  }
}

StartPageServer::StartPageServer() : m_state(std::make_unique<State>()) {}

StartPageServer::~StartPageServer() { Stop(); }

bool StartPageServer::Start(int port, std::string* lpError) {
  if (FAILED(m_state->session.Open(std::string()))) {
    *lpError = m_state->session.Error();
    return false;
  }
  m_state->token = LoadOrMakeToken(DataFolderPath(), lpError);
  if (m_state->token.empty()) return false;
  m_state->icons.Load();
  m_state->Routes();
  m_state->port = port == 0 ? m_state->server.bind_to_any_port("127.0.0.1") : port;
  if (m_state->port <= 0 || (port != 0 && !m_state->server.bind_to_port("127.0.0.1", port))) {
    *lpError = "can't listen on 127.0.0.1:" + std::to_string(port) + ": the port is taken or not allowed";
    return false;
  }
  return true;
}

int StartPageServer::Port() const { return m_state->port; }

std::string StartPageServer::Url() const {
  return "http://127.0.0.1:" + std::to_string(m_state->port) + "/?token=" + m_state->token;
}

void StartPageServer::Run() { m_state->server.listen_after_bind(); }

void StartPageServer::Stop() {
  if (m_state) m_state->server.stop();
}

}  // namespace corvane::cli
