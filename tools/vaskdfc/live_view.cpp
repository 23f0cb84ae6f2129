#include "live_view.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace vaskdfc::tool {
namespace {

constexpr double kMegabyte = 1e6;

struct ViewColumn {
  const char* title;
  std::size_t width;
  bool is_number;
};

// With a blank between each two these leave a sparkline of 10 on 80 columns.
constexpr std::array<ViewColumn, 7> kColumns{{{"#", 2, true},
                                              {"MODEL", 17, false},
                                              {"LINK", 16, false},
                                              {"RX MB/s", 7, true},
                                              {"TX MB/s", 7, true},
                                              {"FRAMES/s", 8, true},
                                              {"ERR/s", 6, true}}};
enum ColumnIndex : std::size_t { kNumber, kModel, kLink, kReceived, kSent, kFrames, kErrors };
constexpr const char* kSparklineTitle = "THROUGHPUT";
constexpr std::size_t kSampleWidth = 6;

constexpr const char* kRed = "\x1b[31m";
constexpr const char* kYellow = "\x1b[33m";
constexpr const char* kReverse = "\x1b[7m";
constexpr const char* kEndOfColour = "\x1b[0m";

constexpr char kReverseKey = 'r';
constexpr char kPageKey = ' ';

struct SortChoice {
  SortKey key;
  char letter;
  const char* name;
};
constexpr std::array<SortChoice, 4> kSortChoices{{{SortKey::kAdapter, 'a', "adapter"},
                                                  {SortKey::kThroughput, 't', "throughput"},
                                                  {SortKey::kFrames, 'f', "frames"},
                                                  {SortKey::kErrors, 'e', "errors"}}};

std::optional<double> value_of(const std::optional<Rate>& rate) { return rate ? rate->per_second : std::nullopt; }

std::optional<double> sort_value(const LiveRow& row, SortKey key) {
  switch (key) {
    case SortKey::kAdapter: return -static_cast<double>(row.adapter);
    case SortKey::kThroughput: return throughput(row.rates);
    case SortKey::kFrames: return value_of(row.rates.frames);
    case SortKey::kErrors: return value_of(row.rates.errors);
  }
  return std::nullopt;
}

// As exact as fits.
std::string number_text(double number, std::size_t width) {
  constexpr std::string_view kThousands = "kMGTPEZ";
  std::string text = fmt::format("{:.1f}", number);
  if (text.size() > width) text = fmt::format("{:.0f}", number);
  for (std::size_t i = 0; text.size() > width && i < kThousands.size(); ++i) {
    number /= 1000;
    text = fmt::format("{:.1f}{}", number, kThousands[i]);
  }
  return text;
}

std::string rate_text(const std::optional<Rate>& rate, std::size_t width, double unit = 1) {
  if (!rate) return absent().text;
  if (!rate->per_second) return mark_cell(rate->kind).text;
  if (rate->kind == Movement::Kind::kForward) return number_text(*rate->per_second / unit, width);
  return number_text(*rate->per_second / unit, width - 1) + mark_cell(rate->kind).text.front();
}

std::string link_text(const LiveRow& row) {
  if (!row.state) return absent().text;
  return row.speed ? *row.state + " " + *row.speed : *row.state;
}

std::string in_column(ColumnIndex index, std::string_view text) {
  const ViewColumn& column = kColumns[index];
  text = text.substr(0, column.width);
  return column.is_number ? fmt::format("{:>{}}", text, column.width) : fmt::format("{:<{}}", text, column.width);
}

// A line that colours parts of itself and knows how wide it is without them.
class Line {
 public:
  Line(std::size_t width, bool colour) : left_(width), colour_(colour) {}

  // Text of one byte a column.
  void add(std::string_view text, const char* colour = nullptr) {
    text = text.substr(0, left_);
    if (text.empty()) return;
    left_ -= text.size();
    text_ += colour_ && colour != nullptr ? fmt::format("{}{}{}", colour, text, kEndOfColour) : std::string(text);
  }
  void add_column(ColumnIndex index, std::string_view text, const char* colour = nullptr) {
    if (index != kNumber) add(" ");
    add(in_column(index, text), colour);
  }
  void add_sparkline(const std::deque<std::optional<double>>& history, bool utf8) {
    add(" ");
    text_ += sparkline(history, left_, utf8);
    left_ = 0;
  }
  std::string text() const { return text_; }

 private:
  std::size_t left_;
  bool colour_;
  std::string text_;
};

std::string titles_text() {
  Line line(std::string::npos, false);
  for (std::size_t i = 0; i < kColumns.size(); ++i) line.add_column(static_cast<ColumnIndex>(i), kColumns[i].title);
  return line.text();
}

void add_row(Line& line, const LiveRow& row) {
  line.add_column(kNumber, fmt::format("{}", row.adapter));
  line.add_column(kModel, row.model.value_or(absent().text));
  line.add_column(kLink, link_text(row), row.speed ? nullptr : kYellow);
  if (!row.problem.empty()) {
    line.add(" ");
    return line.add(row.problem, kRed);
  }
  const LiveRates& rates = row.rates;
  line.add_column(kReceived, rate_text(rates.received, kColumns[kReceived].width, kMegabyte));
  line.add_column(kSent, rate_text(rates.sent, kColumns[kSent].width, kMegabyte));
  line.add_column(kFrames, rate_text(rates.frames, kColumns[kFrames].width));
  line.add_column(kErrors, rate_text(rates.errors, kColumns[kErrors].width), value_of(rates.errors) > 0.0 ? kRed : nullptr);
}

// The keys, with the order of now in brackets.
std::string bottom_text(const ViewOptions& options) {
  std::string text = fmt::format("{} quit  {} {}  sort:", kQuitKey, kReverseKey, options.reversed ? "[reverse]" : "reverse");
  for (const SortChoice& choice : kSortChoices) {
    const bool is_chosen = choice.key == options.sort;
    text += fmt::format("  {}{} {}{}", is_chosen ? "[" : "", choice.letter, choice.name, is_chosen ? "]" : "");
  }
  return text;
}

// Which of the adapters are on the screen.
struct Page {
  std::size_t number;
  std::size_t pages;
  std::size_t begin;
  std::size_t end;
};

constexpr std::size_t kFurniture = 3;  // heading, titles, keys

Page page_of(std::size_t rows, const ViewOptions& options) {
  const std::size_t room = options.lines > kFurniture ? options.lines - kFurniture : 1;
  const std::size_t pages = std::max<std::size_t>((rows + room - 1) / room, 1);
  const std::size_t number = options.page % pages;
  return {number, pages, number * room, std::min((number + 1) * room, rows)};
}

}  // namespace

std::optional<double> throughput(const LiveRates& rates) {
  const auto received = value_of(rates.received);
  const auto sent = value_of(rates.sent);
  return received && sent ? std::optional(*received + *sent) : std::nullopt;
}

std::vector<LiveRow> sorted(std::vector<LiveRow> rows, SortKey key, bool reversed) {
  std::ranges::stable_sort(rows, [&](const LiveRow& left, const LiveRow& right) {
    const auto one = sort_value(left, key);
    const auto other = sort_value(right, key);
    if (!one || !other) return one.has_value() && !other.has_value();
    return reversed ? *one < *other : *one > *other;
  });
  return rows;
}

void apply_key(char key, ViewOptions& options) {
  if (key == kReverseKey) options.reversed = !options.reversed;
  if (key == kPageKey) ++options.page;
  const auto choice = std::ranges::find(kSortChoices, key, &SortChoice::letter);
  if (choice != kSortChoices.end()) options.sort = choice->key;
}

std::vector<std::string> draw(const std::vector<LiveRow>& rows, const std::string& heading, const ViewOptions& options) {
  const auto line_with = [&](auto add) {
    Line line(options.columns, options.colour);
    add(line);
    return line.text();
  };
  const Page page = page_of(rows.size(), options);
  std::vector<std::string> lines;
  lines.push_back(line_with([&](Line& line) {
    line.add(heading);
    if (page.pages > 1) line.add(fmt::format("  page {} of {} (space)", page.number + 1, page.pages));
  }));
  lines.push_back(line_with(
      [&](Line& line) { line.add(fmt::format("{} {:<{}}", titles_text(), kSparklineTitle, options.columns), kReverse); }));
  const std::vector<LiveRow> in_order = sorted(rows, options.sort, options.reversed);
  for (std::size_t i = page.begin; i < page.end; ++i) {
    lines.push_back(line_with([&](Line& line) {
      add_row(line, in_order[i]);
      if (in_order[i].problem.empty()) line.add_sparkline(in_order[i].history, options.utf8);
    }));
  }
  lines.resize(std::max<std::size_t>(options.lines, 1) - 1);
  lines.push_back(line_with([&](Line& line) { line.add(bottom_text(options)); }));
  return lines;
}

std::string plain_titles() { return fmt::format("{:<{}} {}\n", "SAMPLE", kSampleWidth, titles_text()); }

std::string plain_line(std::uint32_t sample, const LiveRow& row) {
  Line line(std::string::npos, false);
  line.add(fmt::format("{:>{}} ", sample, kSampleWidth));
  add_row(line, row);
  return line.text() + "\n";
}

std::string sparkline(const std::deque<std::optional<double>>& history, std::size_t width, bool utf8) {
  constexpr std::array kBlocks{"\u2581", "\u2582", "\u2583", "\u2584", "\u2585", "\u2586", "\u2587", "\u2588"};
  constexpr std::array kLetters{"_", ".", ":", "-", "=", "+", "*", "#"};
  static_assert(kBlocks.size() == kLetters.size());
  const std::size_t count = std::min(width, history.size());
  const std::vector<std::optional<double>> shown(history.end() - static_cast<std::ptrdiff_t>(count), history.end());
  double most = 0;
  for (const auto& value : shown) most = std::max(most, value.value_or(0));
  std::string text;
  for (const auto& value : shown) {
    const double share = most > 0 ? value.value_or(0) / most : 0;
    const auto level = static_cast<std::size_t>(std::lround(share * static_cast<double>(kBlocks.size() - 1)));
    text += !value ? " " : (utf8 ? kBlocks : kLetters)[level];
  }
  return text;
}

}  // namespace vaskdfc::tool
