#include "report_pages/page.h"

#include <cmath>

#include "base/text.h"
#include "html/markup.h"
#include "web/assets.h"

namespace fisheye_calibration::program {
namespace {

// Nothing is loaded from anywhere, nothing is sent, and of scripts only report.js runs: its SHA-256
// in base64, `openssl dgst -sha256 -binary program/web/report.js | base64`.
constexpr const char* kPolicy =
    "default-src 'none'; img-src data:; style-src 'unsafe-inline'; script-src "
    "'sha256-zrWYkkP3+EJQ4E/Elj0PmGO0ZoBHdYPOTCA2kLQf1+8='; base-uri 'none'; form-action 'none'";

std::string headMarkup(const std::string& title) {
  std::string head = startTag("meta", {{"charset", "utf-8"}});
  head += startTag("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", kPolicy}});
  head +=
      startTag("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
  head += textElement("title", {}, title);
  head += element("style", {}, webAsset("theme.css"));
  head += element("style", {}, webAsset("report.css"));
  return element("head", {}, head);
}

std::string contentsMarkup(const std::vector<Section>& sections) {
  std::string items;
  for (const Section& section : sections) {
    std::string target("#");
    target += section.id;
    items += element("li", {}, textElement("a", {{"href", target}}, section.heading));
  }
  return element("nav", {{"aria-label", "Contents"}}, element("ul", {}, items));
}

}  // namespace

std::string notice(Tone tone, const std::string& text) {
  const char* name = tone == Tone::kGood ? "good" : tone == Tone::kWarning ? "warn" : "bad";
  return textElement("p", {{"class", std::string("notice ") + name}}, text);
}

std::string reading(const std::string& name, const std::string& label, double value,
                    const std::string& unit) {
  Attributes attributes = {{"data-reading", name}};
  std::string content = "unknown";
  if (std::isfinite(value)) {
    attributes.emplace_back("data-value", shortest(value));
    content = escaped(roundedToTwo(value)) + " " + textElement("span", {}, unit);
  }
  return element("div", {{"class", "reading"}},
                 textElement("dt", {}, label) + element("dd", attributes, content));
}

std::string reportPage(const std::string& title, const std::string& subtitle,
                       const std::string& head, const std::vector<Section>& sections) {
  std::string body =
      element("header", {},
              textElement("h1", {}, title) + textElement("p", {{"class", "note"}}, subtitle) +
                  head + contentsMarkup(sections));
  for (const Section& section : sections) {
    const std::string headingId = section.id + "-heading";
    body +=
        element("section", {{"id", section.id}, {"class", "card"}, {"aria-labelledby", headingId}},
                textElement("h2", {{"id", headingId}}, section.heading) + section.content + "\n");
  }
  const std::string page =
      element("main", {{"class", "page"}}, body) + element("script", {}, webAsset("report.js"));
  return "<!doctype html>\n" +
         element("html", {{"lang", "en"}}, headMarkup(title) + "\n" + element("body", {}, page)) +
         "\n";
}

}  // namespace fisheye_calibration::program
