// cmd_pins.cc: the host's own changes: "pin", "unpin", "pins" (the focus
// list) and "hide" (a listed row by its row ID).
//
// The component answers S_OK for an ID that matches no row, so the host
// looks the ID up in the listing first and reports an unknown one. Hiding a
// site hides every ranked row of its main domain, each through the
// component's own operation.

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

#include "cli/data_folder.h"
#include "cli/host_text.h"
#include "cli/options.h"
#include "cli/output.h"
#include "cli/row_actions.h"
#include "cli/session.h"
#include "cli/store_reader.h"

namespace corvane::cli {
namespace {

struct PinOptions {
  std::string url;
  std::string name;
};

struct HideOptions {
  std::string target;
  std::string id;  // set in the older form "hide KIND ID"
  bool untilRebuild = false;
};

int PrintDone(const GlobalOptions& global, const std::string& action, const std::string& what,
              const std::string& detail = std::string()) {
  if (global.json) {
    Json::Value document(Json::objectValue);
    document["action"] = action;
    document["target"] = what;
    document["status"] = "ok";
    if (!detail.empty()) document["detail"] = detail;
    PrintJson(document, stdout);
  } else {
    std::printf("%s: %s%s\n", action.c_str(), what.c_str(), detail.empty() ? "" : (": " + detail).c_str());
  }
  return kExitOk;
}

int RunPin(const GlobalOptions& global, const PinOptions& options) {
  std::string action, error;
  if (!CheckPin(options.url, options.name, &error)) return UsageError(error);
  ProviderSession session;
  HRESULT hr = session.Open(std::string());
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (FAILED(PinUrl(session, options.url, options.name, &action, &error))) return ComponentFailure(error);
  return PrintDone(global, action, options.url, action == "already pinned" ? std::string() : options.name);
}

int RunUnpin(const GlobalOptions& global, std::string target) {
  RowKind kind = RowKind::kPin;
  uint32_t number = 0;
  if (ParseRowId(target, &kind, &number) && kind == RowKind::kPin) target = std::to_string(number);
  const bool byId = IsDecimalNumber(target);
  ProviderSession session;
  std::vector<UrlRecord> pins;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr)) hr = session.ListPins(&pins);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  bool known = std::any_of(pins.begin(), pins.end(), [&](const UrlRecord& pin) {
    return byId ? std::to_string(pin.id) == target : pin.url == target;
  });
  if (!known) return Failure("no pinned site with " + std::string(byId ? "ID " : "URL ") + target);
  hr = session.RemovePin(target, byId);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  return PrintDone(global, "unpinned", target);
}

int RunPins(const GlobalOptions& global) {
  ProviderSession session;
  std::vector<UrlRecord> pins;
  HRESULT hr = session.Open(std::string());
  if (SUCCEEDED(hr)) hr = session.ListPins(&pins);
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (global.json) {
    PrintJson(UrlsJson(pins, RowKind::kPin), stdout);
  } else {
    PrintUrls(pins, RowKind::kPin, FormatOf(global), stdout);
  }
  return kExitOk;
}

// The older form "hide KIND NUMBER" as a row ID.
bool RowIdOfKind(const std::string& kindName, const std::string& number, std::string* lpRowId) {
  static const std::pair<const char*, RowKind> kKinds[] = {{"site", RowKind::kDomain}, {"subsite", RowKind::kSubDomain},
                                                            {"url", RowKind::kUrl}, {"history", RowKind::kHistory},
                                                            {"favorite", RowKind::kFavorite}};
  for (const auto& [name, kind] : kKinds) {
    if (kindName == name) *lpRowId = static_cast<char>(kind) + number;
    if (kindName == name) return true;
  }
  return false;
}

int RunHide(const GlobalOptions& global, const HideOptions& options) {
  std::string rowId = options.target;
  if (!options.id.empty() && !RowIdOfKind(options.target, options.id, &rowId)) {
    return UsageError("unknown kind '" + options.target + "': give the row ID as listed, such as s12 or h40");
  }
  std::string what, error;
  // What the person gave wrongly is said before the component starts.
  if (!CheckHideTarget(rowId, options.untilRebuild, &error)) return UsageError(error);
  ProviderSession session;
  HRESULT hr = session.Open(std::string());
  if (FAILED(hr)) return ComponentFailure(session.Error());
  if (FAILED(HideRow(session, rowId, options.untilRebuild, &what, &error))) return Failure(error);
  if (options.untilRebuild) {
    return PrintDone(global, "hidden until the next update", what, "it comes back then with a lowered weight");
  }
  return PrintDone(global, "hidden for good", what, "the component has no way to show it again");
}

}  // namespace

void AddPinCommands(CLI::App& app, const GlobalOptions& global, CommandTable* lpTable) {
  auto pin = std::make_shared<PinOptions>();
  CLI::App* sub = app.add_subcommand("pin", "Pin a site: 'sites' lists every pin first");
  sub->add_option("URL", pin->url, "http, https or file URL; a main domain such as example.com pins the whole site")
      ->required();
  sub->add_option("NAME", pin->name, "Name to show; pinning a pinned URL renames it")->required();
  lpTable->emplace_back(sub, [&global, pin] { return RunPin(global, *pin); });

  auto target = std::make_shared<std::string>();
  sub = app.add_subcommand("unpin", "Remove a pinned site");
  sub->add_option("TARGET", *target, "ID shown by 'pins' (p2 or 2), or the URL")->required();
  lpTable->emplace_back(sub, [&global, target] { return RunUnpin(global, *target); });

  sub = app.add_subcommand("pins", "List the pinned sites");
  lpTable->emplace_back(sub, [&global] { return RunPins(global); });

  auto hide = std::make_shared<HideOptions>();
  sub = app.add_subcommand("hide", "Hide a listed row: a site (with all its hosts and pages), a page, a visit or a "
                                   "favourite");
  sub->add_option("ID", hide->target, "Row ID as listed: s12 (a site, or one part), d3, u7, h40 or f2")->required();
  sub->add_option("NUMBER", hide->id, "Older form: KIND NUMBER, such as 'site 12'");
  sub->add_flag("--until-rebuild", hide->untilRebuild, "Hide until the next update, lowering the weight");
  lpTable->emplace_back(sub, [&global, hide] { return RunHide(global, *hide); });
}

}  // namespace corvane::cli
