// The start page's server, run as a person runs it (`corvane serve --port
// 0` on the demo's data folder): its API through real HTTP requests on
// 127.0.0.1, each request the guard must refuse, and the page itself in
// headless Chromium, driven over the DevTools pipe: the test clicks Pin and
// Hide on tiles and finds both in the next `corvane sites`.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <json/reader.h>
#include <json/writer.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "cli/cli_runner.h"
#include "support/child_process.h"
#include "support/test_host.h"

namespace corvane::testing {
namespace {

class ServeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(Run({"demo"}).status, 0);
    m_server = std::make_unique<test::ChildProcess>(
        std::vector<std::string>{CORVANE_CLI_BINARY, "--data-dir", m_data.Path(), "serve", "--port", "0"},
        m_data.File("serve.log"));
    for (int i = 0; i < 200 && m_url.empty(); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      const std::string log = ReadFile(m_data.File("serve.log"));
      const size_t at = log.find("http://127.0.0.1:");
      if (at != std::string::npos && log.find('\n', at) != std::string::npos) m_url = log.substr(at, log.find('\n', at) - at);
    }
    ASSERT_FALSE(m_url.empty()) << ReadFile(m_data.File("serve.log"));
    m_port = std::stoi(m_url.substr(17, m_url.find('/', 17) - 17));
    m_token = m_url.substr(m_url.find("token=") + 6);
  }

  RunResult Run(const std::vector<std::string>& args) {
    std::vector<std::string> all{"--data-dir", m_data.Path()};
    all.insert(all.end(), args.begin(), args.end());
    return RunBinary(CORVANE_CLI_BINARY, all, {{"CORVANE_APPDATA", ""}, {"CORVANE_TEST_NOW", ""}});
  }
  Json::Value RunJson(std::vector<std::string> args) {
    args.insert(args.begin(), "--json");
    return OutputJson(Run(args));
  }
  // A client that carries the cookie, unless told otherwise.
  httplib::Headers Cookie() const { return {{"Cookie", "corvane_token=" + m_token}}; }

  test::TempDir m_data;
  std::unique_ptr<test::ChildProcess> m_server;
  std::string m_url, m_token;
  int m_port = 0;
};

Json::Value Parse(const std::string& text) {
  Json::Value value;
  std::string error;
  EXPECT_TRUE(ParseJson(text, &value, &error)) << error << text;
  return value;
}

TEST_F(ServeTest, ApiAnswersOnlyRequestsWithTheTokenFromItsOwnPage) {
  struct stat info {};
  ASSERT_EQ(stat(m_data.File("CorvaneApp/ServeToken").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  EXPECT_EQ(m_token.size(), 64u);  // 256 bits
  httplib::Client client("127.0.0.1", m_port);
  // The token in the address becomes a cookie the page's scripts can't read.
  auto entry = client.Get(("/?token=" + m_token).c_str());
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->status, 302);
  EXPECT_EQ(entry->get_header_value("Set-Cookie"), "corvane_token=" + m_token + "; Path=/; HttpOnly; SameSite=Strict");
  auto page = client.Get("/", Cookie());
  ASSERT_TRUE(page);
  EXPECT_EQ(page->status, 200);
  EXPECT_EQ(page->body.find("http://"), std::string::npos) << "the page loads nothing from elsewhere";
  const Json::Value sites = Parse(client.Get("/api/sites?n=5", Cookie())->body);
  ASSERT_EQ(sites.size(), 5u);
  const std::string pinsBefore = RunJson({"pins"}).toStyledString();
  // Refused: no token, a wrong one, a foreign Host, a foreign Origin on a
  // change, a body over 64 KiB. Nothing changes.
  const std::string pin = R"({"url": "https://evil.example/", "name": "Evil"})";
  struct Refused {
    const char* what;
    httplib::Result result;
    int status;
  };
  Refused refused[] = {
      {"no token", client.Get("/api/sites"), 403},
      {"wrong token", client.Get("/api/sites", {{"Cookie", "corvane_token=" + std::string(64, 'a')}}), 403},
      {"foreign host", client.Get("/api/sites", {{"Cookie", "corvane_token=" + m_token}, {"Host", "evil.example"}}), 403},
      {"foreign origin", client.Post("/api/pin", {{"Cookie", "corvane_token=" + m_token}, {"Origin", "http://evil.example"}},
                                     pin, "application/json"), 403},
      {"no token on a change", client.Post("/api/pin", pin, "application/json"), 403},
      {"large body", client.Post("/api/pin", Cookie(), std::string(65 * 1024, ' '), "application/json"), 413},
  };
  for (Refused& each : refused) {
    ASSERT_TRUE(each.result) << each.what;
    EXPECT_EQ(each.result->status, each.status) << each.what;
  }
  EXPECT_EQ(RunJson({"pins"}).toStyledString(), pinsBefore);
  // Accepted changes, from the page's own origin.
  const httplib::Headers own = {{"Cookie", "corvane_token=" + m_token},
                                {"Origin", "http://127.0.0.1:" + std::to_string(m_port)}};
  auto pinned = client.Post("/api/pin", own, R"({"url": "https://www.rust-lang.org", "name": "Rust"})", "application/json");
  ASSERT_TRUE(pinned);
  EXPECT_EQ(pinned->status, 200) << pinned->body;
  auto bad = client.Post("/api/pin", own, R"J({"url": "javascript:alert(1)", "name": "X"})J", "application/json");
  EXPECT_EQ(bad->status, 400);
  const Json::Value pins = RunJson({"pins"});
  EXPECT_EQ(pins[0]["name"].asString(), "Rust");
  EXPECT_EQ(client.Post("/api/unpin", own, R"({"id": "2"})", "application/json")->status, 400);
  EXPECT_EQ(client.Post("/api/unpin", own, "{\"id\": \"" + pins[0]["id"].asString() + "\"}", "application/json")->status, 200);
  EXPECT_EQ(RunJson({"pins"}).size(), 0u);
  const Json::Value found = Parse(client.Get("/api/search?q=wiki", Cookie())->body);
  ASSERT_GT(found.size(), 0u);
  EXPECT_NE(found[0]["visits"][0]["url"].asString().find("wiki"), std::string::npos);
  const Json::Value why = Parse(client.Get("/api/explain?target=www.youtube.com", Cookie())->body);
  EXPECT_EQ(why["lines"][0].asString(), "www.youtube.com, of the site youtube.com");
}

// The DevTools protocol over --remote-debugging-pipe: JSON messages ended
// by a zero byte, Chromium reading fd 3 and writing fd 4.
class DevTools {
 public:
  DevTools(const std::string& chromium, const std::string& profile, const std::string& url) {
    int toBrowser[2], fromBrowser[2];
    if (pipe(toBrowser) != 0 || pipe(fromBrowser) != 0) return;
    m_pid = fork();
    if (m_pid == 0) {
      dup2(toBrowser[0], 3);
      dup2(fromBrowser[1], 4);
      int null = open("/dev/null", O_WRONLY);
      dup2(null, STDOUT_FILENO);
      dup2(null, STDERR_FILENO);
      execl(chromium.c_str(), chromium.c_str(), "--headless", "--no-sandbox", "--disable-gpu", "--no-first-run",
            "--remote-debugging-pipe", "--window-size=1280,900", ("--user-data-dir=" + profile).c_str(), url.c_str(),
            static_cast<char*>(nullptr));
      _exit(127);
    }
    close(toBrowser[0]);
    close(fromBrowser[1]);
    m_write = toBrowser[1];
    m_read = fromBrowser[0];
  }
  ~DevTools() {
    if (m_pid > 0) kill(m_pid, SIGKILL), waitpid(m_pid, nullptr, 0);
    if (m_write >= 0) close(m_write);
    if (m_read >= 0) close(m_read);
  }

  // Sends a command and returns its result; null on an error or none.
  Json::Value Call(const std::string& method, const Json::Value& params, const std::string& session = "") {
    Json::Value message(Json::objectValue);
    message["id"] = ++m_id;
    message["method"] = method;
    message["params"] = params;
    if (!session.empty()) message["sessionId"] = session;
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    const std::string text = Json::writeString(builder, message);
    if (write(m_write, text.c_str(), text.size() + 1) != static_cast<ssize_t>(text.size() + 1)) return Json::Value();
    for (;;) {
      const size_t end = m_buffer.find('\0');
      if (end == std::string::npos) {
        char chunk[65536];
        const ssize_t got = read(m_read, chunk, sizeof(chunk));
        if (got <= 0) return Json::Value();
        m_buffer.append(chunk, static_cast<size_t>(got));
        continue;
      }
      Json::Value reply = Parse(m_buffer.substr(0, end));
      m_buffer.erase(0, end + 1);
      if (reply["id"].asInt() == m_id) return reply.isMember("error") ? Json::Value() : reply["result"];
    }
  }

  // The page's session, once the page exists.
  std::string AttachToPage() {
    for (int i = 0; i < 100; ++i) {
      const Json::Value targets = Call("Target.getTargets", Json::Value(Json::objectValue));
      for (const Json::Value& target : targets["targetInfos"]) {
        if (target["type"] != "page") continue;
        Json::Value params(Json::objectValue);
        params["targetId"] = target["targetId"];
        params["flatten"] = true;
        return Call("Target.attachToTarget", params)["sessionId"].asString();
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return std::string();
  }

  // The value of a script's promise, run in the page.
  Json::Value Evaluate(const std::string& session, const std::string& script) {
    Json::Value params(Json::objectValue);
    params["expression"] = script;
    params["awaitPromise"] = true;
    params["returnByValue"] = true;
    return Call("Runtime.evaluate", params, session)["result"]["value"];
  }

 private:
  pid_t m_pid = -1;
  int m_write = -1, m_read = -1, m_id = 0;
  std::string m_buffer;
};

// Waits in the page until the tiles are drawn, clicks the named button of
// the tile whose name is given, and waits until the tiles are drawn anew.
std::string ClickScript(const std::string& tileName, const std::string& buttonText) {
  return "(async () => {"
         "  const until = async (test) => { for (let i = 0; i < 100 && !test(); ++i) await new Promise(r => setTimeout(r, 100)); };"
         "  await until(() => document.querySelectorAll('.tile').length > 0);"
         "  const tile = [...document.querySelectorAll('.tile')].find(t => t.querySelector('.name').textContent === '" +
         tileName + "');"
         "  if (!tile) return 'no tile';"
         "  const button = [...tile.querySelectorAll('button')].find(b => b.textContent === '" + buttonText + "');"
         "  button.click();"
         "  await until(() => !tile.isConnected);"
         "  return tile.isConnected ? 'not redrawn: ' + document.getElementById('status').textContent : 'done';"
         "})()";
}

TEST_F(ServeTest, PagePinsAndHidesByClicksInChromium) {
  const std::string chromium = test::FindProgram({"chromium"});
  CORVANE_REQUIRE_PROGRAM(chromium, "chromium");
  DevTools browser(chromium, m_data.File("profile"), m_url);
  const std::string session = browser.AttachToPage();
  ASSERT_FALSE(session.empty());
  // The address with the token redirects once; the tiles come after.
  bool drawn = false;
  for (int i = 0; i < 100 && !drawn; ++i) {
    drawn = browser.Evaluate(session, "document.querySelectorAll('.tile').length").asInt() > 0;
    if (!drawn) std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  ASSERT_TRUE(drawn);
  EXPECT_EQ(browser.Evaluate(session, ClickScript("Facebook", "Pin")).asString(), "done");
  EXPECT_EQ(browser.Evaluate(session, ClickScript("YouTube", "Hide")).asString(), "done");
  const Json::Value shot = browser.Call("Page.captureScreenshot", Json::Value(Json::objectValue), session);
  EXPECT_GT(shot["data"].asString().size(), 20000u);
  const Json::Value sites = RunJson({"sites", "-n", "100"});
  ASSERT_GT(sites.size(), 1u);
  EXPECT_EQ(sites[0]["name"].asString() + " " + sites[0]["focus"].asString(), "Facebook true");
  for (const Json::Value& site : sites) EXPECT_NE(site["mainDomain"].asString(), "youtube.com");
}

}  // namespace
}  // namespace corvane::testing
