#include "card_svg.h"

#include <algorithm>
#include <cmath>

#include "markup.h"
#include "text_width.h"

namespace tool {
namespace {

constexpr double margin = 10, gap = 7, icon_width = 17;
constexpr double title_height = 25, name_height = 14, row_height = 17, rows_margin = 6;
constexpr double bell_width = 120, bell_height = 34, number_height = 24, caption_height = 15;
constexpr double bar_height = 9, least_bar = 64, most_label = 130, least_width = 150, most_width = 250;
constexpr double bold = 1.1;  // wider than plain text
constexpr double number_size = 15;

struct columns {
    double label, value, beside;
};

columns columns_of(const card& drawn) {
    columns widths{0, 0, drawn.beside.empty() ? 0 : drawn_width(drawn.beside, small_size)};
    for (const card_row& row : drawn.rows) {
        widths.label =
            std::max(widths.label, drawn_width(row.label, text_size) * (row.is_observed ? bold : 1));
        widths.value = std::max(widths.value, drawn_width(row.value, text_size));
        widths.beside = std::max(widths.beside, drawn_width(row.beside, small_size));
    }
    widths.label = std::min(widths.label, most_label);
    return widths;
}

bool has_bars(const card& drawn) {
    return std::ranges::any_of(drawn.rows, [](const card_row& row) { return row.belief.has_value(); });
}

bool has_body(const card& drawn) { return !drawn.rows.empty() || !drawn.number.empty(); }

bool has_bell(const card& drawn) {
    return drawn.sort == card_sort::continuous && drawn.is_computed && !drawn.number.empty();
}

// Functions have lines along their sides, inside.
double inset(const card& drawn) { return drawn.sort == card_sort::function ? 5 : 0; }

bool has_second_line(const card& drawn) {
    return has_body(drawn) && !(drawn.name.empty() && drawn.evidence.empty() && drawn.beside.empty());
}

double header_height(const card& drawn) { return title_height + (has_second_line(drawn) ? name_height : 0); }

bool has_caption(const card& drawn) {
    return !drawn.caption.empty() && (drawn.is_computed || drawn.rows.empty());
}

double width_of(const card& drawn) {
    double width = icon_width + drawn_width(drawn.title, title_size) * bold;
    if (has_second_line(drawn))
        width =
            std::max(width, drawn_width(drawn.name, small_size) +
                                (drawn.evidence.empty() ? 0 : gap + drawn_width(drawn.evidence, small_size)) +
                                (drawn.beside.empty() ? 0 : gap + drawn_width(drawn.beside, small_size)));
    const columns widths = columns_of(drawn);
    double row = widths.label;
    for (const double column : {has_bars(drawn) ? least_bar : 0, widths.value, widths.beside})
        row += column > 0 ? gap + column : 0;
    width = std::max(
        {width, row, drawn_width(drawn.number, number_size) * bold, has_bell(drawn) ? bell_width : 0});
    if (has_caption(drawn)) width = std::max(width, drawn_width(drawn.caption, small_size));
    width = std::ceil(width + 2 * (margin + inset(drawn)));
    return has_body(drawn)
               ? std::clamp(width, least_width, std::max(most_width, row + 2 * margin + 2 * inset(drawn)))
               : std::min(width, most_width);
}

using text_place = std::pair<double, double>;

std::string text_at(text_place place, const char* style, const std::string& text,
                    const char* anchor = "start") {
    if (text.empty()) return "";
    return element("text",
                   {{"class", style},
                    {"x", coordinate(place.first)},
                    {"y", coordinate(place.second)},
                    {"text-anchor", anchor}},
                   markup(text));
}

std::string tooltip(const std::string& text) { return element("title", {}, markup(text)); }

std::string box(const char* style, double x, double y, double width, double height, double radius) {
    return element("rect", {{"class", style},
                            {"x", coordinate(x)},
                            {"y", coordinate(y)},
                            {"width", coordinate(width)},
                            {"height", coordinate(height)},
                            {"rx", coordinate(radius)}});
}

std::string path(const char* style, const std::string& outline) {
    return element("path", {{"class", style}, {"d", outline}});
}

std::string numbers(std::initializer_list<double> values) {
    std::string text;
    for (const double value : values) text += (text.empty() ? "" : " ") + coordinate(value);
    return text;
}

// The upper part, down to `bottom`, or all of the outline: utilities have their corners cut, decisions have sharp ones.
std::string outline(const card& drawn, double width, double height, double bottom) {
    const double cut = drawn.sort == card_sort::utility    ? 9
                       : drawn.sort == card_sort::decision ? 0
                       : drawn.sort == card_sort::function ? 2
                                                           : 8;
    const std::string corner = drawn.sort == card_sort::utility ? "L" : "Q";
    const auto turn = [&](double x, double y, double to_x, double to_y) {
        return corner + (corner == "L" ? "" : numbers({x, y}) + " ") + numbers({to_x, to_y});
    };
    std::string text = "M" + numbers({0, cut}) + turn(0, 0, cut, 0) + "H" + numbers({width - cut}) +
                       turn(width, 0, width, cut);
    if (bottom < height) return text + "V" + numbers({bottom}) + "H0Z";
    return text + "V" + numbers({height - cut}) + turn(width, height, width - cut, height) + "H" +
           numbers({cut}) + turn(0, height, 0, height - cut) + "Z";
}

// What tells the sorts of nodes apart, beside their outline.
std::string icon(card_sort sort, double x, double y) {
    switch (sort) {
    case card_sort::chance:
        return element("circle",
                       {{"class", "icon"}, {"cx", coordinate(x)}, {"cy", coordinate(y)}, {"r", "4"}});
    case card_sort::decision: return path("icon", "M" + numbers({x - 4, y - 4}) + "h8v8h-8Z");
    case card_sort::utility: return path("icon", "M" + numbers({x, y - 5}) + "l5 5l-5 5l-5 -5Z");
    case card_sort::continuous: return path("icon", "M" + numbers({x - 5, y + 4}) + "c4 0 3 -8 5 -8s1 8 5 8");
    default: return text_at({x - 4, y + 4}, "sign", "\u0192");
    }
}

std::string header(const card& drawn, double width, double height) {
    const double left = margin + inset(drawn), right = width - margin - inset(drawn);
    const double bottom = has_body(drawn) ? header_height(drawn) : height;
    const double middle = title_height / 2 + (has_body(drawn) ? 1 : 0);
    const std::string title = shortened(drawn.title, title_size * bold, right - left - icon_width);
    std::string text = path("head", outline(drawn, width, height, bottom)) +
                       icon(drawn.sort, left + 4, middle) +
                       text_at({left + icon_width, middle + 4.5}, "title", title);
    if (!has_second_line(drawn)) return text;
    const double line = title_height + name_height - 7;
    const double evidence = drawn.evidence.empty() ? 0 : drawn_width(drawn.evidence, small_size) + gap;
    const double beside = drawn.beside.empty() ? 0 : drawn_width(drawn.beside, small_size) + gap;
    text +=
        text_at({left, line}, "name", shortened(drawn.name, small_size, right - left - evidence - beside));
    text += text_at({right - beside, line}, "mark", drawn.evidence, "end");
    return text + text_at({right, line}, "name", drawn.beside, "end");
}

std::string row_as_svg(const card& drawn, const card_row& row, double width, double y) {
    const columns widths = columns_of(drawn);
    const double left = margin + inset(drawn), right = width - margin - inset(drawn);
    const double line = y + row_height / 2 + 4;
    const double values_end = right - (widths.beside > 0 ? widths.beside + gap : 0);
    std::string text =
        tooltip(row.details) +
        text_at({left, line}, row.is_observed ? "label seen" : "label",
                shortened(row.label, text_size * (row.is_observed ? bold : 1), widths.label)) +
        text_at({values_end, line}, row.is_observed ? "value seen" : "value", row.value, "end") +
        text_at({right, line}, "beside", row.beside, "end");
    if (row.belief) {
        const double start = left + widths.label + gap, top = y + (row_height - bar_height) / 2;
        const double length = values_end - widths.value - gap - start;
        text += box("track", start, top, length, bar_height, 2);
        const double filled = std::clamp(*row.belief, 0.0, 1.0) * length;
        if (filled > 0) text += box("bar", start, top, filled, bar_height, std::min(2.0, filled / 2));
    }
    return element("g", {{"class", "row"}}, text);
}

// The density of a normal distribution, with a standard deviation to both sides of the mean; a line where all is certain.
std::string bell(double middle, double top, bool is_certain) {
    const double ground = top + bell_height, left = middle - bell_width / 2;
    std::string text = path("axis", "M" + numbers({left, ground}) + "h" + numbers({bell_width}));
    if (is_certain)
        return text + path("spike", "M" + numbers({middle, ground}) + "v" + numbers({-bell_height + 2}));
    constexpr int steps = 48;
    constexpr double deviations = 3;
    const auto height_at = [&](double z) { return ground - (bell_height - 2) * std::exp(-z * z / 2); };
    const auto curve = [&](double from, double to) {
        std::string points;
        for (int i = 0; i <= steps; ++i) {
            const double z = from + (to - from) * i / steps;
            points += (i == 0 ? "" : "L") + numbers({middle + z / deviations * bell_width / 2, height_at(z)});
        }
        return points;
    };
    const double deviation = bell_width / 2 / deviations;
    text += path("likely",
                 "M" + curve(-1, 1) + "V" + numbers({ground}) + "H" + numbers({middle - deviation}) + "Z");
    text += path("bell", "M" + curve(-deviations, deviations));
    return text + path("axis", "M" + numbers({middle, ground}) + "v" + numbers({-bell_height + 2}));
}

std::string number_as_svg(const card& drawn, double width, double y) {
    std::string text;
    if (has_bell(drawn)) {
        text += bell(width / 2, y, drawn.is_certain);
        y += bell_height;
    }
    text += text_at({width / 2, y + 18}, drawn.is_computed || drawn.caption == "value" ? "number" : "missing",
                    drawn.number, "middle");
    const double room = width - 2 * (margin + inset(drawn));
    return text + text_at({width / 2, y + number_height + 8}, "name",
                          shortened(drawn.caption, small_size, room), "middle");
}

std::string all_said(const card& drawn) {
    return drawn.title + (drawn.name.empty() ? "" : " (" + drawn.name + ")") + ": " + name_of(drawn.sort) +
           (drawn.evidence.empty() ? "" : ", " + drawn.evidence) +
           (drawn.number.empty() ? "" : ", " + drawn.number + " (" + drawn.caption + ")");
}

}  // namespace

card_size size_of(const card& drawn) {
    double height = header_height(drawn);
    if (has_body(drawn)) height += 2 * rows_margin;
    height += row_height * static_cast<double>(drawn.rows.size());
    if (!drawn.number.empty()) height += number_height;
    if (has_bell(drawn)) height += bell_height;
    if (has_caption(drawn)) height += caption_height;
    return {width_of(drawn), height};
}

std::string card_as_svg(const card& drawn) {
    const auto [width, height] = size_of(drawn);
    const double body = header_height(drawn) + rows_margin;
    std::string text = tooltip(all_said(drawn)) + path("body", outline(drawn, width, height, height)) +
                       element("g", {{"class", "heading"}}, header(drawn, width, height));
    double y = body;
    for (const card_row& row : drawn.rows) {
        text += row_as_svg(drawn, row, width, y);
        y += row_height;
    }
    if (!drawn.number.empty())
        text += number_as_svg(drawn, width, body);
    else if (has_caption(drawn))
        text += text_at({width / 2, y + 11}, "name", drawn.caption, "middle");
    text += path("outline", outline(drawn, width, height, height));
    if (drawn.sort == card_sort::function)
        text += path("side",
                     "M5 0V" + numbers({height}) + "M" + numbers({width - 5, 0}) + "V" + numbers({height}));
    const std::string style =
        std::string("node ") + name_of(drawn.sort) + (drawn.evidence.empty() ? "" : " evidence");
    return element("g", {{"class", style}}, text);
}

}  // namespace tool
