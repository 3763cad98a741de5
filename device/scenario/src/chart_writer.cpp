#include "chart_writer.h"

#include <algorithm>
#include <cstdio>

#include "chart_lanes.h"
#include "scenario_words.h"

namespace Tarvo::Emu {
namespace {
constexpr int LABEL_WIDTH = 260;
constexpr int PLOT_WIDTH = 1000;
constexpr int RIGHT_MARGIN = 30;
constexpr int TOP = 44;
constexpr int ROW_HEIGHT = 22;
constexpr int LANE_PAD = 8;
constexpr int AXIS_HEIGHT = 46;
constexpr int GLYPH_WIDTH = 7;  // about, at 12px sans-serif
constexpr int MAX_TICKS = 12;
constexpr const char* COLORS[] = {"#8ecae6", "#ffb703", "#fb8500", "#ffd166", "#90be6d", "#cdb4db", "#f4a261"};

std::string Seconds(int64_t ms)
{
    char text[48];
    snprintf(text, sizeof(text), "%lld.%03lld", static_cast<long long>(ms / 1000), static_cast<long long>(ms % 1000));
    std::string out = text;
    out.erase(out.find_last_not_of('0') + 1);
    if (out.back() == '.') {
        out.pop_back();
    }
    return out;
}

// 1, 2 or 5 times a power of ten, so that the axis has at most MAX_TICKS ticks.
int64_t TickStep(int64_t span)
{
    for (int64_t power = 1;; power *= 10) {
        for (int64_t factor : {1, 2, 5}) {
            if (span / (factor * power) <= MAX_TICKS) {
                return factor * power;
            }
        }
    }
}

class SvgCanvas {
public:
    explicit SvgCanvas(int64_t span) : span_(span) {}

    double X(int64_t t) const { return LABEL_WIDTH + static_cast<double>(t) * PLOT_WIDTH / static_cast<double>(span_); }
    int64_t End() const { return span_; }
    void Rect(double x, double y, double width, double height, const char* fill, const std::string& title)
    {
        char head[160];
        snprintf(head, sizeof(head), "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"%s\">", x, y,
                 width, height, fill);
        body_ += head;
        body_ += title.empty() ? "" : "<title>" + ChartWriter::Escape(title) + "</title>";
        body_ += "</rect>\n";
    }
    void Text(double x, double y, const std::string& text, const char* attributes = "")
    {
        char head[160];
        snprintf(head, sizeof(head), "<text x=\"%.1f\" y=\"%.1f\"%s>", x, y, attributes);
        body_ += head + ChartWriter::Escape(text) + "</text>\n";
    }
    void Line(double x1, double y1, double x2, double y2, const char* stroke)
    {
        char line[200];
        snprintf(line, sizeof(line), "<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"%s\"/>\n", x1, y1,
                 x2, y2, stroke);
        body_ += line;
    }
    std::string Document(int height) const
    {
        const int width = LABEL_WIDTH + PLOT_WIDTH + RIGHT_MARGIN;
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
               std::to_string(width) + "\" height=\"" + std::to_string(height) + "\" viewBox=\"0 0 " +
               std::to_string(width) + " " + std::to_string(height) +
               "\" font-family=\"sans-serif\" font-size=\"12\">\n<rect width=\"100%\" height=\"100%\" "
               "fill=\"white\"/>\n" +
               body_ + "</svg>\n";
    }

private:
    int64_t span_;
    std::string body_;
};

int LaneHeight(const ChartLane& lane)
{
    return static_cast<int>(lane.rows) * ROW_HEIGHT + LANE_PAD;
}

void DrawLaneBackground(SvgCanvas& canvas, const ChartLane& lane, int top, size_t index)
{
    canvas.Rect(0, top, LABEL_WIDTH + PLOT_WIDTH, LaneHeight(lane), index % 2 == 0 ? "#f4f4f4" : "#ffffff", "");
    canvas.Text(8, top + LaneHeight(lane) / 2.0 + 4, lane.label, " font-weight=\"bold\"");
}

// Where the next bar on the same row begins, or the plot's right edge.
double RoomAfter(const SvgCanvas& canvas, const ChartLane& lane, size_t index)
{
    const ChartBar& bar = lane.bars[index];
    double room = canvas.X(canvas.End());
    for (const ChartBar& other : lane.bars) {
        if (other.row == bar.row && other.begin >= bar.end && canvas.X(other.begin) < room) {
            room = canvas.X(other.begin);
        }
    }
    return room;
}

void DrawBars(SvgCanvas& canvas, const ChartLane& lane, int top, size_t index)
{
    const char* color = COLORS[index % (sizeof(COLORS) / sizeof(COLORS[0]))];
    for (size_t i = 0; i < lane.bars.size(); ++i) {
        const ChartBar& bar = lane.bars[i];
        const double x = canvas.X(bar.begin);
        const double width = std::max(2.0, canvas.X(bar.end) - x);
        const double y = top + LANE_PAD / 2.0 + static_cast<double>(bar.row) * ROW_HEIGHT;
        const std::string title = bar.text + " (" + Seconds(bar.begin) + " s to " + Seconds(bar.end) + " s)";
        canvas.Rect(x, y + 1, width, ROW_HEIGHT - 2, color, title);
        canvas.Line(x, y + 1, x, y + ROW_HEIGHT - 1, "#555555");
        const double textWidth = static_cast<double>(GLYPH_WIDTH * bar.text.size() + 6);
        if (width >= textWidth) {
            canvas.Text(x + 3, y + ROW_HEIGHT / 2.0 + 4, bar.text);
        } else if (x + width + textWidth <= RoomAfter(canvas, lane, i)) {
            // A short bar is labelled just after its end, when the row is free there.
            canvas.Text(x + width + 3, y + ROW_HEIGHT / 2.0 + 4, bar.text, " fill=\"#555555\"");
        }
    }
}

void DrawAxis(SvgCanvas& canvas, int64_t span, int top, int bottom)
{
    const int64_t step = TickStep(span);
    for (int64_t t = 0; t <= span; t += step) {
        const double x = canvas.X(t);
        canvas.Line(x, top, x, bottom, "#dddddd");
        canvas.Line(x, bottom, x, bottom + 5, "#000000");
        canvas.Text(x, bottom + 18, Seconds(t), " text-anchor=\"middle\"");
    }
    canvas.Line(LABEL_WIDTH, bottom, LABEL_WIDTH + PLOT_WIDTH, bottom, "#000000");
    canvas.Text(LABEL_WIDTH + PLOT_WIDTH / 2.0, bottom + 36, "time (s)", " text-anchor=\"middle\"");
}
}  // namespace

std::string ChartWriter::Escape(std::string_view text)
{
    std::string out;
    size_t i = 0;
    while (i < text.size()) {
        // Whole valid UTF-8 sequences pass; a stray byte becomes '?'.
        size_t length = 1;
        while (static_cast<unsigned char>(text[i]) >= 0x80 && length < 4 && i + length < text.size() &&
               (static_cast<unsigned char>(text[i + length]) & 0xC0) == 0x80) {
            ++length;
        }
        const std::string_view piece = text.substr(i, length);
        if (!IsValidUtf8(piece)) {
            out += '?';
            i += 1;
            continue;
        }
        i += length;
        const char c = piece[0];
        if (piece.size() > 1) {
            out += piece;
        } else if (c == '&') {
            out += "&amp;";
        } else if (c == '<') {
            out += "&lt;";
        } else if (c == '>') {
            out += "&gt;";
        } else if (c == '"') {
            out += "&quot;";
        } else if (c == '\'') {
            out += "&apos;";
        } else {
            // XML 1.0 allows no control characters but tab, newline and carriage return.
            out += (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r') ? '?' : c;
        }
    }
    return out;
}

std::string ChartWriter::Render(const std::vector<TraceEvent>& events, int64_t endMs)
{
    const std::vector<ChartLane> lanes = ChartLanes::Build(events, endMs);
    int64_t span = std::max<int64_t>(endMs, 1);
    for (const auto& lane : lanes) {
        for (const auto& bar : lane.bars) {
            span = std::max(span, bar.end);
        }
    }
    SvgCanvas canvas(span);
    canvas.Text(8, 24, "zel_device run: " + Seconds(endMs) + " s of virtual time", " font-size=\"15\"");
    // Backgrounds, then the grid, then the bars, so that the grid shows between bars only.
    std::vector<int> tops;
    int y = TOP;
    for (size_t i = 0; i < lanes.size(); ++i) {
        tops.push_back(y);
        DrawLaneBackground(canvas, lanes[i], y, i);
        y += LaneHeight(lanes[i]);
    }
    DrawAxis(canvas, span, TOP, y);
    for (size_t i = 0; i < lanes.size(); ++i) {
        DrawBars(canvas, lanes[i], tops[i], i);
    }
    return canvas.Document(y + AXIS_HEIGHT);
}

}  // namespace Tarvo::Emu
