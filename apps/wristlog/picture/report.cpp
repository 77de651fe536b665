#include "picture/report.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "picture/actogram.h"
#include "picture/findings.h"
#include "picture/light_words.h"
#include "picture/local_time.h"
#include "picture/markup.h"
#include "picture/shapes.h"
#include "picture/style.h"

namespace wristlog::picture {
namespace {

/// Cells of one row; every text is escaped here.
class Row {
 public:
  Row& head(const std::string& text) { return cell("th scope=\"row\"", "th", text); }
  Row& text(const std::string& text) { return cell("td", "td", text); }
  Row& number(const std::string& text) { return cell("td class=\"number\"", "td", text); }
  std::string html() const { return "<tr>" + cells_ + "</tr>\n"; }

 private:
  Row& cell(const char* open, const char* close, const std::string& text) {
    cells_ += std::string("<") + open + ">" + escaped(text) + "</" + close + ">";
    return *this;
  }

  std::string cells_;
};

struct Heading {
  std::string Text;
  bool OfNumbers = false;
};

std::string tableHead(const std::vector<Heading>& headings) {
  std::string html = "<thead><tr>";
  for (const Heading& heading : headings)
    html += std::string("<th scope=\"col\"") + (heading.OfNumbers ? " class=\"number\"" : "") + ">" +
            escaped(heading.Text) + "</th>";
  return html + "</tr></thead>\n<tbody>\n";
}

std::string warningsSection(const std::vector<std::string>& findings) {
  std::string html = "<section><h2>What to know</h2>\n";
  if (findings.empty()) return html + "<p>Nothing out of the ordinary was found.</p></section>\n";
  html += "<ul class=\"warnings\">\n";
  for (const std::string& finding : findings) html += "<li>" + escaped(finding) + "</li>\n";
  return html + "</ul></section>\n";
}

std::string factsSection(const PlottedRecording& recording) {
  std::string html = "<section><h2>The recording</h2>\n<table class=\"facts\"><tbody>\n";
  for (const Fact& fact : recording.Facts) html += Row().head(fact.Label).text(fact.Value).html();
  return html + "</tbody></table></section>\n";
}

std::string pictureSection(const PlottedRecording& recording, const RecordedDays& days) {
  std::string html = "<section><h2>Actogram</h2>\n";
  for (const std::string& piece : actogramPieces(recording, days)) html += "<figure>" + piece + "</figure>\n";
  return html + "</section>\n";
}

/// A column of the summary: a heading, and a day's cell.
class Summary {
 public:
  Summary(const PlottedRecording& recording, const RecordedDays& days) : recording_(recording), days_(days) {}

  std::string html() const {
    std::vector<Heading> headings{{"Day"}, {"Epochs", true}, {"No value", true}};
    if (!recording_.Activity.empty()) headings.push_back({"Mean activity, counts an epoch", true});
    if (!recording_.Steps.empty()) headings.push_back({"Steps", true});
    for (const LightLine& line : recording_.Light)
      headings.push_back({"Mean " + withUnit(lightName(line.Colour), ", ", recording_.LightAxis), true});
    if (!recording_.OffWrist.empty()) headings.push_back({"Off the wrist", true});
    headings.push_back({"Markers", true});
    std::string html = "<section><h2>Day by day</h2>\n<div class=\"scroll\"><table>\n" + tableHead(headings);
    for (const Day& day : days_.Days) html += row(dayText(day.Number), day.Totals);
    html += row("All", days_.Totals) + "</tbody></table></div>\n";
    if (!recording_.OffWrist.empty())
      html += "<p class=\"note\">Means of activity and light leave out the epochs off the wrist.</p>\n";
    return html + "</section>\n";
  }

 private:
  static std::string meanText(const Total& total) {
    if (total.Count == 0) return "";
    const double mean = total.mean();
    return number(mean, mean >= 100 ? 0 : mean >= 1 ? 1 : 4);
  }

  std::string duration(std::int64_t epochs) const {
    return epochs > 0 ? durationText(epochs * recording_.Epoch) : "";
  }

  std::string row(const std::string& name, const Totals& totals) const {
    Row row;
    row.head(name).number(std::to_string(totals.Epochs)).number(duration(totals.Epochs - totals.Valued));
    if (!recording_.Activity.empty()) row.number(meanText(totals.Activity));
    if (!recording_.Steps.empty()) row.number(number(totals.Steps.Sum, 0));
    for (std::size_t i = 0; i < std::min(recording_.Light.size(), MostLightLines); ++i)
      row.number(meanText(totals.Light[i]));
    if (!recording_.OffWrist.empty()) row.number(duration(totals.OffWrist));
    row.number(std::to_string(totals.Markers[0] + totals.Markers[1]));
    return row.html();
  }

  const PlottedRecording& recording_;
  const RecordedDays& days_;
};

std::string eventsSection(const PlottedRecording& recording) {
  std::string html = "<section><h2>Events</h2>\n";
  if (recording.Events.empty()) return html + "<p>The logger wrote no events.</p></section>\n";
  const LocalClock clock(recording.Offsets);
  html += "<div class=\"scroll\"><table>\n" + tableHead({{capital(timeWords(recording))}, {"Event"}});
  for (std::size_t i = 0; i < std::min(recording.Events.size(), MostListedEvents); ++i) {
    const Event& event = recording.Events[i];
    html += Row().text(event.Time ? timeText(clock.at(*event.Time)) : "unknown").text(event.Words).html();
  }
  html += "</tbody></table></div>\n";
  const std::size_t all = recording.Events.size() + recording.EventsLeftOut;
  if (all > MostListedEvents)
    html += "<p class=\"note\">" + std::to_string(all - MostListedEvents) +
            " more events are not listed here.</p>\n";
  return html + "</section>\n";
}

std::string readingSection(const PlottedRecording& recording, const RecordedDays& days) {
  const Layout& layout = recording.Layout;
  const std::string minutes = std::to_string(1440 / std::max<std::size_t>(1, days.ColumnsPerDay));
  return "<section><h2>How to read the picture</h2>\n"
         "<p>Each row is " +
         std::to_string(layout.DaysAcross * 24) + " hours long and begins at " +
         clockText(layout.StartHour * HourSeconds) + " of the day that is named at its left. " +
         (layout.DaysAcross > 1
              ? "The second half of a row is the first half of the next one, so a night is never cut in two. "
              : "") +
         "What happens at the same time each day stands in one column; a rhythm that drifts runs "
         "aslant.</p>\n"
         "<p>A bar is the mean of " +
         minutes + " minutes. The height of a row is " +
         (layout.ActivityScale > 0 ? "the number of counts that was asked for"
                                   : "chosen so that all but the highest half percent of the bars fit in") +
         "; higher ones are cut and marked. Light is drawn on a logarithmic scale; values beyond it stand "
         "at its ends. A place where nothing was stored is filled grey, a value of 0 has a base line, and "
         "where there is neither the recording had not begun or was over.</p>\n"
         "<p>When the clocks are put forward the skipped hour stays blank; when they are put back the "
         "repeated hour shows the larger of its two values. Both are marked. The tables have days from "
         "midnight to midnight, and count every epoch.</p></section>\n";
}

}  // namespace

std::string reportHtml(const PlottedRecording& recording, const RecordedDays& days) {
  const std::string title =
      (recording.IsPart ? "Beginning of a recording of " : "Recording of ") +
      (recording.Subject.empty() ? std::string("an unnamed subject") : recording.Subject);
  std::string html =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\"/>\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
      "<meta name=\"color-scheme\" content=\"light dark\"/>\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
      "style-src 'unsafe-inline'\"/>\n<title>" +
      escaped(title) + "</title>\n<style>\n" + pageStyle() + pictureStyle() +
      "</style>\n</head>\n<body>\n<main>\n<h1>" + escaped(title) + "</h1>\n<p class=\"period\">" +
      escaped("Logger " + recording.Logger + (days.Days.empty() ? "" : ", " + periodText(recording))) +
      "</p>\n";
  html += warningsSection(findingsOf(recording, days)) + factsSection(recording) +
          pictureSection(recording, days) + Summary(recording, days).html() + eventsSection(recording) +
          readingSection(recording, days);
  return html + "</main>\n</body>\n</html>\n";
}

}  // namespace wristlog::picture
