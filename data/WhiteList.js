// Sample white list of the corvane host: popular sites by group with their
// hosts, hosts that must never be recommended, rules that make hosts of a
// main domain sites of their own, and display names of such hosts.
{
 "whitelist": [
  {
   "maindomain": "google.com",
   "name": "Google",
   "domains": [
    {
     "domain": "www.google.com",
     "name": "Google"
    },
    {
     "domain": "mail.google.com",
     "name": "Google Mail"
    },
    {
     "domain": "drive.google.com",
     "name": "Google Drive"
    },
    {
     "domain": "docs.google.com",
     "name": "Google Docs"
    },
    {
     "domain": "maps.google.com",
     "name": "Google Maps"
    },
    {
     "domain": "translate.google.com",
     "name": "Google Translate"
    }
   ]
  },
  {
   "maindomain": "youtube.com",
   "name": "YouTube",
   "domains": [
    {
     "domain": "www.youtube.com",
     "name": "YouTube"
    },
    {
     "domain": "m.youtube.com",
     "name": "YouTube M"
    },
    {
     "domain": "music.youtube.com",
     "name": "YouTube Music"
    }
   ]
  },
  {
   "maindomain": "facebook.com",
   "name": "Facebook",
   "domains": [
    {
     "domain": "www.facebook.com",
     "name": "Facebook"
    },
    {
     "domain": "m.facebook.com",
     "name": "Facebook M"
    }
   ]
  },
  {
   "maindomain": "wikipedia.org",
   "name": "Wikipedia",
   "domains": [
    {
     "domain": "en.wikipedia.org",
     "name": "Wikipedia En"
    },
    {
     "domain": "de.wikipedia.org",
     "name": "Wikipedia De"
    },
    {
     "domain": "fr.wikipedia.org",
     "name": "Wikipedia Fr"
    },
    {
     "domain": "es.wikipedia.org",
     "name": "Wikipedia Es"
    }
   ]
  },
  {
   "maindomain": "amazon.com",
   "name": "Amazon",
   "domains": [
    {
     "domain": "www.amazon.com",
     "name": "Amazon"
    },
    {
     "domain": "smile.amazon.com",
     "name": "Amazon Smile"
    }
   ]
  },
  {
   "maindomain": "reddit.com",
   "name": "Reddit",
   "domains": [
    {
     "domain": "www.reddit.com",
     "name": "Reddit"
    },
    {
     "domain": "old.reddit.com",
     "name": "Reddit Old"
    }
   ]
  },
  {
   "maindomain": "x.com",
   "name": "X",
   "domains": [
    {
     "domain": "www.x.com",
     "name": "X"
    }
   ]
  },
  {
   "maindomain": "instagram.com",
   "name": "Instagram",
   "domains": [
    {
     "domain": "www.instagram.com",
     "name": "Instagram"
    }
   ]
  },
  {
   "maindomain": "linkedin.com",
   "name": "LinkedIn",
   "domains": [
    {
     "domain": "www.linkedin.com",
     "name": "LinkedIn"
    }
   ]
  },
  {
   "maindomain": "github.com",
   "name": "GitHub",
   "domains": [
    {
     "domain": "www.github.com",
     "name": "GitHub"
    },
    {
     "domain": "gist.github.com",
     "name": "GitHub Gist"
    }
   ]
  },
  {
   "maindomain": "stackoverflow.com",
   "name": "Stack Overflow",
   "domains": [
    {
     "domain": "www.stackoverflow.com",
     "name": "Stack Overflow"
    }
   ]
  },
  {
   "maindomain": "stackexchange.com",
   "name": "Stack Exchange",
   "domains": [
    {
     "domain": "math.stackexchange.com",
     "name": "Stack Exchange Math"
    },
    {
     "domain": "unix.stackexchange.com",
     "name": "Stack Exchange Unix"
    },
    {
     "domain": "superuser.stackexchange.com",
     "name": "Stack Exchange Superuser"
    }
   ]
  },
  {
   "maindomain": "netflix.com",
   "name": "Netflix",
   "domains": [
    {
     "domain": "www.netflix.com",
     "name": "Netflix"
    }
   ]
  },
  {
   "maindomain": "microsoft.com",
   "name": "Microsoft",
   "domains": [
    {
     "domain": "www.microsoft.com",
     "name": "Microsoft"
    },
    {
     "domain": "learn.microsoft.com",
     "name": "Microsoft Learn"
    },
    {
     "domain": "support.microsoft.com",
     "name": "Microsoft Support"
    }
   ]
  },
  {
   "maindomain": "office.com",
   "name": "Office",
   "domains": [
    {
     "domain": "www.office.com",
     "name": "Office"
    }
   ]
  },
  {
   "maindomain": "live.com",
   "name": "Live",
   "domains": [
    {
     "domain": "outlook.live.com",
     "name": "Live Outlook"
    },
    {
     "domain": "login.live.com",
     "name": "Live Login"
    }
   ]
  },
  {
   "maindomain": "apple.com",
   "name": "Apple",
   "domains": [
    {
     "domain": "www.apple.com",
     "name": "Apple"
    },
    {
     "domain": "support.apple.com",
     "name": "Apple Support"
    },
    {
     "domain": "developer.apple.com",
     "name": "Apple Developer"
    }
   ]
  },
  {
   "maindomain": "yahoo.com",
   "name": "Yahoo",
   "domains": [
    {
     "domain": "www.yahoo.com",
     "name": "Yahoo"
    },
    {
     "domain": "mail.yahoo.com",
     "name": "Yahoo Mail"
    },
    {
     "domain": "finance.yahoo.com",
     "name": "Yahoo Finance"
    },
    {
     "domain": "news.yahoo.com",
     "name": "Yahoo News"
    }
   ]
  },
  {
   "maindomain": "bing.com",
   "name": "Bing",
   "domains": [
    {
     "domain": "www.bing.com",
     "name": "Bing"
    }
   ]
  },
  {
   "maindomain": "duckduckgo.com",
   "name": "DuckDuckGo",
   "domains": [
    {
     "domain": "www.duckduckgo.com",
     "name": "DuckDuckGo"
    }
   ]
  },
  {
   "maindomain": "bbc.com",
   "name": "BBC World",
   "domains": [
    {
     "domain": "www.bbc.com",
     "name": "BBC World"
    }
   ]
  },
  {
   "maindomain": "nytimes.com",
   "name": "The New York Times",
   "domains": [
    {
     "domain": "www.nytimes.com",
     "name": "The New York Times"
    },
    {
     "domain": "cooking.nytimes.com",
     "name": "The New York Times Cooking"
    }
   ]
  },
  {
   "maindomain": "theguardian.com",
   "name": "The Guardian",
   "domains": [
    {
     "domain": "www.theguardian.com",
     "name": "The Guardian"
    }
   ]
  },
  {
   "maindomain": "cnn.com",
   "name": "CNN",
   "domains": [
    {
     "domain": "www.cnn.com",
     "name": "CNN"
    },
    {
     "domain": "edition.cnn.com",
     "name": "CNN Edition"
    }
   ]
  },
  {
   "maindomain": "reuters.com",
   "name": "Reuters",
   "domains": [
    {
     "domain": "www.reuters.com",
     "name": "Reuters"
    }
   ]
  },
  {
   "maindomain": "bloomberg.com",
   "name": "Bloomberg",
   "domains": [
    {
     "domain": "www.bloomberg.com",
     "name": "Bloomberg"
    }
   ]
  },
  {
   "maindomain": "washingtonpost.com",
   "name": "The Washington Post",
   "domains": [
    {
     "domain": "www.washingtonpost.com",
     "name": "The Washington Post"
    }
   ]
  },
  {
   "maindomain": "forbes.com",
   "name": "Forbes",
   "domains": [
    {
     "domain": "www.forbes.com",
     "name": "Forbes"
    }
   ]
  },
  {
   "maindomain": "economist.com",
   "name": "The Economist",
   "domains": [
    {
     "domain": "www.economist.com",
     "name": "The Economist"
    }
   ]
  },
  {
   "maindomain": "ft.com",
   "name": "Financial Times",
   "domains": [
    {
     "domain": "www.ft.com",
     "name": "Financial Times"
    }
   ]
  },
  {
   "maindomain": "wsj.com",
   "name": "Wall Street Journal",
   "domains": [
    {
     "domain": "www.wsj.com",
     "name": "Wall Street Journal"
    }
   ]
  },
  {
   "maindomain": "apnews.com",
   "name": "Associated Press",
   "domains": [
    {
     "domain": "www.apnews.com",
     "name": "Associated Press"
    }
   ]
  },
  {
   "maindomain": "aljazeera.com",
   "name": "Al Jazeera",
   "domains": [
    {
     "domain": "www.aljazeera.com",
     "name": "Al Jazeera"
    }
   ]
  },
  {
   "maindomain": "spiegel.de",
   "name": "Spiegel",
   "domains": [
    {
     "domain": "www.spiegel.de",
     "name": "Spiegel"
    }
   ]
  },
  {
   "maindomain": "lemonde.fr",
   "name": "Le Monde",
   "domains": [
    {
     "domain": "www.lemonde.fr",
     "name": "Le Monde"
    }
   ]
  },
  {
   "maindomain": "elpais.com",
   "name": "El País",
   "domains": [
    {
     "domain": "www.elpais.com",
     "name": "El País"
    }
   ]
  },
  {
   "maindomain": "twitch.tv",
   "name": "Twitch",
   "domains": [
    {
     "domain": "www.twitch.tv",
     "name": "Twitch"
    }
   ]
  },
  {
   "maindomain": "spotify.com",
   "name": "Spotify",
   "domains": [
    {
     "domain": "open.spotify.com",
     "name": "Spotify Open"
    },
    {
     "domain": "www.spotify.com",
     "name": "Spotify"
    }
   ]
  },
  {
   "maindomain": "soundcloud.com",
   "name": "SoundCloud",
   "domains": [
    {
     "domain": "www.soundcloud.com",
     "name": "SoundCloud"
    }
   ]
  },
  {
   "maindomain": "vimeo.com",
   "name": "Vimeo",
   "domains": [
    {
     "domain": "www.vimeo.com",
     "name": "Vimeo"
    }
   ]
  },
  {
   "maindomain": "tiktok.com",
   "name": "TikTok",
   "domains": [
    {
     "domain": "www.tiktok.com",
     "name": "TikTok"
    }
   ]
  },
  {
   "maindomain": "pinterest.com",
   "name": "Pinterest",
   "domains": [
    {
     "domain": "www.pinterest.com",
     "name": "Pinterest"
    }
   ]
  },
  {
   "maindomain": "tumblr.com",
   "name": "Tumblr",
   "domains": [
    {
     "domain": "www.tumblr.com",
     "name": "Tumblr"
    }
   ]
  },
  {
   "maindomain": "medium.com",
   "name": "Medium",
   "domains": [
    {
     "domain": "www.medium.com",
     "name": "Medium"
    }
   ]
  },
  {
   "maindomain": "substack.com",
   "name": "Substack",
   "domains": [
    {
     "domain": "www.substack.com",
     "name": "Substack"
    }
   ]
  },
  {
   "maindomain": "quora.com",
   "name": "Quora",
   "domains": [
    {
     "domain": "www.quora.com",
     "name": "Quora"
    }
   ]
  },
  {
   "maindomain": "ycombinator.com",
   "name": "Hacker News",
   "domains": [
    {
     "domain": "news.ycombinator.com",
     "name": "Hacker News News"
    }
   ]
  },
  {
   "maindomain": "slashdot.org",
   "name": "Slashdot",
   "domains": [
    {
     "domain": "www.slashdot.org",
     "name": "Slashdot"
    }
   ]
  },
  {
   "maindomain": "arstechnica.com",
   "name": "Ars Technica",
   "domains": [
    {
     "domain": "www.arstechnica.com",
     "name": "Ars Technica"
    }
   ]
  },
  {
   "maindomain": "theverge.com",
   "name": "The Verge",
   "domains": [
    {
     "domain": "www.theverge.com",
     "name": "The Verge"
    }
   ]
  },
  {
   "maindomain": "wired.com",
   "name": "Wired",
   "domains": [
    {
     "domain": "www.wired.com",
     "name": "Wired"
    }
   ]
  },
  {
   "maindomain": "techcrunch.com",
   "name": "TechCrunch",
   "domains": [
    {
     "domain": "www.techcrunch.com",
     "name": "TechCrunch"
    }
   ]
  },
  {
   "maindomain": "engadget.com",
   "name": "Engadget",
   "domains": [
    {
     "domain": "www.engadget.com",
     "name": "Engadget"
    }
   ]
  },
  {
   "maindomain": "lwn.net",
   "name": "LWN",
   "domains": [
    {
     "domain": "www.lwn.net",
     "name": "LWN"
    }
   ]
  },
  {
   "maindomain": "phoronix.com",
   "name": "Phoronix",
   "domains": [
    {
     "domain": "www.phoronix.com",
     "name": "Phoronix"
    }
   ]
  },
  {
   "maindomain": "debian.org",
   "name": "Debian",
   "domains": [
    {
     "domain": "www.debian.org",
     "name": "Debian"
    },
    {
     "domain": "wiki.debian.org",
     "name": "Debian Wiki"
    },
    {
     "domain": "packages.debian.org",
     "name": "Debian Packages"
    },
    {
     "domain": "lists.debian.org",
     "name": "Debian Lists"
    }
   ]
  },
  {
   "maindomain": "ubuntu.com",
   "name": "Ubuntu",
   "domains": [
    {
     "domain": "www.ubuntu.com",
     "name": "Ubuntu"
    },
    {
     "domain": "help.ubuntu.com",
     "name": "Ubuntu Help"
    },
    {
     "domain": "discourse.ubuntu.com",
     "name": "Ubuntu Discourse"
    }
   ]
  },
  {
   "maindomain": "archlinux.org",
   "name": "Arch Linux",
   "domains": [
    {
     "domain": "wiki.archlinux.org",
     "name": "Arch Linux Wiki"
    },
    {
     "domain": "www.archlinux.org",
     "name": "Arch Linux"
    },
    {
     "domain": "bbs.archlinux.org",
     "name": "Arch Linux Bbs"
    }
   ]
  },
  {
   "maindomain": "kernel.org",
   "name": "Kernel.org",
   "domains": [
    {
     "domain": "www.kernel.org",
     "name": "Kernel.org"
    },
    {
     "domain": "git.kernel.org",
     "name": "Kernel.org Git"
    },
    {
     "domain": "lore.kernel.org",
     "name": "Kernel.org Lore"
    }
   ]
  },
  {
   "maindomain": "mozilla.org",
   "name": "Mozilla",
   "domains": [
    {
     "domain": "www.mozilla.org",
     "name": "Mozilla"
    },
    {
     "domain": "developer.mozilla.org",
     "name": "Mozilla Developer"
    },
    {
     "domain": "support.mozilla.org",
     "name": "Mozilla Support"
    }
   ]
  },
  {
   "maindomain": "python.org",
   "name": "Python",
   "domains": [
    {
     "domain": "www.python.org",
     "name": "Python"
    },
    {
     "domain": "docs.python.org",
     "name": "Python Docs"
    },
    {
     "domain": "pypi.python.org",
     "name": "Python Pypi"
    }
   ]
  },
  {
   "maindomain": "pypi.org",
   "name": "PyPI",
   "domains": [
    {
     "domain": "www.pypi.org",
     "name": "PyPI"
    }
   ]
  },
  {
   "maindomain": "npmjs.com",
   "name": "npm",
   "domains": [
    {
     "domain": "www.npmjs.com",
     "name": "npm"
    }
   ]
  },
  {
   "maindomain": "rust-lang.org",
   "name": "Rust",
   "domains": [
    {
     "domain": "www.rust-lang.org",
     "name": "Rust"
    },
    {
     "domain": "doc.rust-lang.org",
     "name": "Rust Doc"
    },
    {
     "domain": "crates.rust-lang.org",
     "name": "Rust Crates"
    }
   ]
  },
  {
   "maindomain": "docs.rs",
   "name": "docs.rs",
   "domains": [
    {
     "domain": "www.docs.rs",
     "name": "docs.rs"
    }
   ]
  },
  {
   "maindomain": "crates.io",
   "name": "crates.io",
   "domains": [
    {
     "domain": "www.crates.io",
     "name": "crates.io"
    }
   ]
  },
  {
   "maindomain": "go.dev",
   "name": "Go",
   "domains": [
    {
     "domain": "pkg.go.dev",
     "name": "Go Pkg"
    },
    {
     "domain": "www.go.dev",
     "name": "Go"
    }
   ]
  },
  {
   "maindomain": "cppreference.com",
   "name": "cppreference",
   "domains": [
    {
     "domain": "en.cppreference.com",
     "name": "cppreference En"
    }
   ]
  },
  {
   "maindomain": "gitlab.com",
   "name": "GitLab",
   "domains": [
    {
     "domain": "www.gitlab.com",
     "name": "GitLab"
    }
   ]
  },
  {
   "maindomain": "bitbucket.org",
   "name": "Bitbucket",
   "domains": [
    {
     "domain": "www.bitbucket.org",
     "name": "Bitbucket"
    }
   ]
  },
  {
   "maindomain": "sourceforge.net",
   "name": "SourceForge",
   "domains": [
    {
     "domain": "www.sourceforge.net",
     "name": "SourceForge"
    }
   ]
  },
  {
   "maindomain": "docker.com",
   "name": "Docker Hub",
   "domains": [
    {
     "domain": "hub.docker.com",
     "name": "Docker Hub Hub"
    },
    {
     "domain": "docs.docker.com",
     "name": "Docker Hub Docs"
    },
    {
     "domain": "www.docker.com",
     "name": "Docker Hub"
    }
   ]
  },
  {
   "maindomain": "kubernetes.io",
   "name": "Kubernetes",
   "domains": [
    {
     "domain": "www.kubernetes.io",
     "name": "Kubernetes"
    }
   ]
  },
  {
   "maindomain": "cloudflare.com",
   "name": "Cloudflare",
   "domains": [
    {
     "domain": "www.cloudflare.com",
     "name": "Cloudflare"
    },
    {
     "domain": "dash.cloudflare.com",
     "name": "Cloudflare Dash"
    },
    {
     "domain": "developers.cloudflare.com",
     "name": "Cloudflare Developers"
    }
   ]
  },
  {
   "maindomain": "digitalocean.com",
   "name": "DigitalOcean",
   "domains": [
    {
     "domain": "www.digitalocean.com",
     "name": "DigitalOcean"
    },
    {
     "domain": "cloud.digitalocean.com",
     "name": "DigitalOcean Cloud"
    }
   ]
  },
  {
   "maindomain": "amazonaws.com",
   "name": "AWS",
   "domains": [
    {
     "domain": "console.amazonaws.com",
     "name": "AWS Console"
    },
    {
     "domain": "s3.amazonaws.com",
     "name": "AWS S3"
    }
   ]
  },
  {
   "maindomain": "dropbox.com",
   "name": "Dropbox",
   "domains": [
    {
     "domain": "www.dropbox.com",
     "name": "Dropbox"
    }
   ]
  },
  {
   "maindomain": "box.com",
   "name": "Box",
   "domains": [
    {
     "domain": "app.box.com",
     "name": "Box App"
    },
    {
     "domain": "www.box.com",
     "name": "Box"
    }
   ]
  },
  {
   "maindomain": "notion.so",
   "name": "Notion",
   "domains": [
    {
     "domain": "www.notion.so",
     "name": "Notion"
    }
   ]
  },
  {
   "maindomain": "trello.com",
   "name": "Trello",
   "domains": [
    {
     "domain": "www.trello.com",
     "name": "Trello"
    }
   ]
  },
  {
   "maindomain": "atlassian.net",
   "name": "Atlassian",
   "domains": [
    {
     "domain": "www.atlassian.net",
     "name": "Atlassian"
    }
   ]
  },
  {
   "maindomain": "slack.com",
   "name": "Slack",
   "domains": [
    {
     "domain": "app.slack.com",
     "name": "Slack App"
    },
    {
     "domain": "www.slack.com",
     "name": "Slack"
    }
   ]
  },
  {
   "maindomain": "discord.com",
   "name": "Discord",
   "domains": [
    {
     "domain": "www.discord.com",
     "name": "Discord"
    }
   ]
  },
  {
   "maindomain": "zoom.us",
   "name": "Zoom",
   "domains": [
    {
     "domain": "www.zoom.us",
     "name": "Zoom"
    }
   ]
  },
  {
   "maindomain": "whatsapp.com",
   "name": "WhatsApp",
   "domains": [
    {
     "domain": "web.whatsapp.com",
     "name": "WhatsApp Web"
    },
    {
     "domain": "www.whatsapp.com",
     "name": "WhatsApp"
    }
   ]
  },
  {
   "maindomain": "telegram.org",
   "name": "Telegram",
   "domains": [
    {
     "domain": "web.telegram.org",
     "name": "Telegram Web"
    },
    {
     "domain": "www.telegram.org",
     "name": "Telegram"
    }
   ]
  },
  {
   "maindomain": "proton.me",
   "name": "Proton",
   "domains": [
    {
     "domain": "mail.proton.me",
     "name": "Proton Mail"
    },
    {
     "domain": "account.proton.me",
     "name": "Proton Account"
    }
   ]
  },
  {
   "maindomain": "ebay.com",
   "name": "eBay",
   "domains": [
    {
     "domain": "www.ebay.com",
     "name": "eBay"
    }
   ]
  },
  {
   "maindomain": "etsy.com",
   "name": "Etsy",
   "domains": [
    {
     "domain": "www.etsy.com",
     "name": "Etsy"
    }
   ]
  },
  {
   "maindomain": "aliexpress.com",
   "name": "AliExpress",
   "domains": [
    {
     "domain": "www.aliexpress.com",
     "name": "AliExpress"
    }
   ]
  },
  {
   "maindomain": "ikea.com",
   "name": "IKEA",
   "domains": [
    {
     "domain": "www.ikea.com",
     "name": "IKEA"
    }
   ]
  },
  {
   "maindomain": "walmart.com",
   "name": "Walmart",
   "domains": [
    {
     "domain": "www.walmart.com",
     "name": "Walmart"
    }
   ]
  },
  {
   "maindomain": "target.com",
   "name": "Target",
   "domains": [
    {
     "domain": "www.target.com",
     "name": "Target"
    }
   ]
  },
  {
   "maindomain": "bestbuy.com",
   "name": "Best Buy",
   "domains": [
    {
     "domain": "www.bestbuy.com",
     "name": "Best Buy"
    }
   ]
  },
  {
   "maindomain": "paypal.com",
   "name": "PayPal",
   "domains": [
    {
     "domain": "www.paypal.com",
     "name": "PayPal"
    }
   ]
  },
  {
   "maindomain": "stripe.com",
   "name": "Stripe",
   "domains": [
    {
     "domain": "dashboard.stripe.com",
     "name": "Stripe Dashboard"
    },
    {
     "domain": "www.stripe.com",
     "name": "Stripe"
    }
   ]
  },
  {
   "maindomain": "booking.com",
   "name": "Booking.com",
   "domains": [
    {
     "domain": "www.booking.com",
     "name": "Booking.com"
    }
   ]
  },
  {
   "maindomain": "airbnb.com",
   "name": "Airbnb",
   "domains": [
    {
     "domain": "www.airbnb.com",
     "name": "Airbnb"
    }
   ]
  },
  {
   "maindomain": "tripadvisor.com",
   "name": "Tripadvisor",
   "domains": [
    {
     "domain": "www.tripadvisor.com",
     "name": "Tripadvisor"
    }
   ]
  },
  {
   "maindomain": "expedia.com",
   "name": "Expedia",
   "domains": [
    {
     "domain": "www.expedia.com",
     "name": "Expedia"
    }
   ]
  },
  {
   "maindomain": "imdb.com",
   "name": "IMDb",
   "domains": [
    {
     "domain": "www.imdb.com",
     "name": "IMDb"
    },
    {
     "domain": "m.imdb.com",
     "name": "IMDb M"
    }
   ]
  },
  {
   "maindomain": "rottentomatoes.com",
   "name": "Rotten Tomatoes",
   "domains": [
    {
     "domain": "www.rottentomatoes.com",
     "name": "Rotten Tomatoes"
    }
   ]
  },
  {
   "maindomain": "goodreads.com",
   "name": "Goodreads",
   "domains": [
    {
     "domain": "www.goodreads.com",
     "name": "Goodreads"
    }
   ]
  },
  {
   "maindomain": "archive.org",
   "name": "Internet Archive",
   "domains": [
    {
     "domain": "web.archive.org",
     "name": "Internet Archive Web"
    },
    {
     "domain": "www.archive.org",
     "name": "Internet Archive"
    }
   ]
  },
  {
   "maindomain": "weather.com",
   "name": "Weather.com",
   "domains": [
    {
     "domain": "www.weather.com",
     "name": "Weather.com"
    }
   ]
  },
  {
   "maindomain": "accuweather.com",
   "name": "AccuWeather",
   "domains": [
    {
     "domain": "www.accuweather.com",
     "name": "AccuWeather"
    }
   ]
  },
  {
   "maindomain": "espn.com",
   "name": "ESPN",
   "domains": [
    {
     "domain": "www.espn.com",
     "name": "ESPN"
    }
   ]
  },
  {
   "maindomain": "khanacademy.org",
   "name": "Khan Academy",
   "domains": [
    {
     "domain": "www.khanacademy.org",
     "name": "Khan Academy"
    }
   ]
  },
  {
   "maindomain": "coursera.org",
   "name": "Coursera",
   "domains": [
    {
     "domain": "www.coursera.org",
     "name": "Coursera"
    }
   ]
  },
  {
   "maindomain": "edx.org",
   "name": "edX",
   "domains": [
    {
     "domain": "www.edx.org",
     "name": "edX"
    }
   ]
  },
  {
   "maindomain": "duolingo.com",
   "name": "Duolingo",
   "domains": [
    {
     "domain": "www.duolingo.com",
     "name": "Duolingo"
    }
   ]
  },
  {
   "maindomain": "wolframalpha.com",
   "name": "Wolfram Alpha",
   "domains": [
    {
     "domain": "www.wolframalpha.com",
     "name": "Wolfram Alpha"
    }
   ]
  },
  {
   "maindomain": "arxiv.org",
   "name": "arXiv",
   "domains": [
    {
     "domain": "www.arxiv.org",
     "name": "arXiv"
    }
   ]
  },
  {
   "maindomain": "nature.com",
   "name": "Nature",
   "domains": [
    {
     "domain": "www.nature.com",
     "name": "Nature"
    }
   ]
  },
  {
   "maindomain": "science.org",
   "name": "Science",
   "domains": [
    {
     "domain": "www.science.org",
     "name": "Science"
    }
   ]
  },
  {
   "maindomain": "wiktionary.org",
   "name": "Wiktionary",
   "domains": [
    {
     "domain": "en.wiktionary.org",
     "name": "Wiktionary En"
    }
   ]
  },
  {
   "maindomain": "openstreetmap.org",
   "name": "OpenStreetMap",
   "domains": [
    {
     "domain": "www.openstreetmap.org",
     "name": "OpenStreetMap"
    }
   ]
  },
  {
   "maindomain": "craigslist.org",
   "name": "Craigslist",
   "domains": [
    {
     "domain": "www.craigslist.org",
     "name": "Craigslist"
    }
   ]
  },
  {
   "maindomain": "indeed.com",
   "name": "Indeed",
   "domains": [
    {
     "domain": "www.indeed.com",
     "name": "Indeed"
    }
   ]
  },
  {
   "maindomain": "glassdoor.com",
   "name": "Glassdoor",
   "domains": [
    {
     "domain": "www.glassdoor.com",
     "name": "Glassdoor"
    }
   ]
  },
  {
   "maindomain": "canva.com",
   "name": "Canva",
   "domains": [
    {
     "domain": "www.canva.com",
     "name": "Canva"
    }
   ]
  },
  {
   "maindomain": "figma.com",
   "name": "Figma",
   "domains": [
    {
     "domain": "www.figma.com",
     "name": "Figma"
    }
   ]
  },
  {
   "maindomain": "adobe.com",
   "name": "Adobe",
   "domains": [
    {
     "domain": "www.adobe.com",
     "name": "Adobe"
    },
    {
     "domain": "helpx.adobe.com",
     "name": "Adobe Helpx"
    }
   ]
  },
  {
   "maindomain": "wordpress.com",
   "name": "WordPress",
   "domains": [
    {
     "domain": "www.wordpress.com",
     "name": "WordPress"
    }
   ]
  },
  {
   "maindomain": "blogger.com",
   "name": "Blogger",
   "domains": [
    {
     "domain": "www.blogger.com",
     "name": "Blogger"
    }
   ]
  },
  {
   "maindomain": "wix.com",
   "name": "Wix",
   "domains": [
    {
     "domain": "www.wix.com",
     "name": "Wix"
    }
   ]
  },
  {
   "maindomain": "huggingface.co",
   "name": "Hugging Face",
   "domains": [
    {
     "domain": "www.huggingface.co",
     "name": "Hugging Face"
    }
   ]
  },
  {
   "maindomain": "kaggle.com",
   "name": "Kaggle",
   "domains": [
    {
     "domain": "www.kaggle.com",
     "name": "Kaggle"
    }
   ]
  },
  {
   "maindomain": "steampowered.com",
   "name": "Steam",
   "domains": [
    {
     "domain": "store.steampowered.com",
     "name": "Steam Store"
    },
    {
     "domain": "help.steampowered.com",
     "name": "Steam Help"
    }
   ]
  },
  {
   "maindomain": "epicgames.com",
   "name": "Epic Games",
   "domains": [
    {
     "domain": "store.epicgames.com",
     "name": "Epic Games Store"
    },
    {
     "domain": "www.epicgames.com",
     "name": "Epic Games"
    }
   ]
  }
 ],
 "blacklist": [
  {
   "maindomain": "doubleclick.net",
   "name": "Ads",
   "domains": [
    {
     "domain": "ad.doubleclick.net",
     "name": "Ads"
    },
    {
     "domain": "doubleclick.net",
     "name": "Ads"
    }
   ]
  },
  {
   "maindomain": "localhost",
   "name": "Local",
   "domains": [
    {
     "domain": "localhost",
     "name": "Local machine"
    }
   ]
  }
 ],
 "sublist": [
  {
   "maindomain": "github.io",
   "name": "GitHub Pages",
   "domains": [
    {
     "domain": "[a-z0-9-]+\\.github\\.io",
     "name": "GitHub Pages site"
    }
   ]
  },
  {
   "maindomain": "blogspot.com",
   "name": "Blogger blogs",
   "domains": [
    {
     "domain": "[a-z0-9-]+\\.blogspot\\.com",
     "name": "Blogger blog"
    }
   ]
  },
  {
   "maindomain": "substack.com",
   "name": "Substack newsletters",
   "domains": [
    {
     "domain": "[a-z0-9-]+\\.substack\\.com",
     "name": "Substack newsletter"
    }
   ]
  },
  {
   "maindomain": "medium.com",
   "name": "Medium publications",
   "domains": [
    {
     "domain": "[a-z0-9-]+\\.medium\\.com",
     "name": "Medium publication"
    }
   ]
  },
  {
   "maindomain": "wordpress.com",
   "name": "WordPress blogs",
   "domains": [
    {
     "domain": "[a-z0-9-]+\\.wordpress\\.com",
     "name": "WordPress blog"
    }
   ]
  },
  {
   "maindomain": "readthedocs.io",
   "name": "Read the Docs",
   "domains": [
    {
     "domain": "[a-z0-9-]+\\.readthedocs\\.io",
     "name": "Project documentation"
    }
   ]
  }
 ],
 "names": [
  {
   "domain": "torvalds.github.io",
   "name": "Linus's pages"
  },
  {
   "domain": "sqlite.readthedocs.io",
   "name": "SQLite notes"
  },
  {
   "domain": "rust.github.io",
   "name": "Rust pages"
  },
  {
   "domain": "python.readthedocs.io",
   "name": "Python notes"
  },
  {
   "domain": "engineering.medium.com",
   "name": "Engineering blog"
  },
  {
   "domain": "weekly.substack.com",
   "name": "The Weekly"
  }
 ]
}
