/* groups of hosts that make one site */
{"whitelist": [{"name": "Google", "maindomain": "google.com", "domains": [{"domain": "mail.google.com", "name": "Google Mail"}, {"domain": "docs.google.com", "name": "Docs"}]}],
 "blacklist": [{"maindomain": "ads.example", "domains": [{"domain": "tracker.ads.example"}]}],
 "sublist": [{"maindomain": "github.io", "domains": [{"domain": "[a-z0-9-]+\\.github\\.io"}]}],
 "names": [{"name": "Wikipedia", "domain": "wikipedia.org"}]}
