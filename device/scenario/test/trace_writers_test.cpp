#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <sstream>

#include "chart_writer.h"
#include "jsonl_writer.h"
#include "timeline_writer.h"

namespace Tarvo::Emu {
namespace {

TraceEvent Event(int64_t t, std::string ev, std::vector<TraceField> fields)
{
    return TraceEvent{t, std::move(ev), std::move(fields)};
}

TraceEvent Refresh(int64_t t, const std::string& voter, bool status, int64_t max, const std::string& desc)
{
    return Event(t, "mox.refresh",
                 {{"name", voter}, {"status", status}, {"min", int64_t{0}}, {"max", max}, {"desc", desc}});
}

class TraceWritersTest : public testing::Test {
protected:
    // The texts of the chart's <text> elements; fails the test when the chart is not well-formed XML.
    std::vector<std::string> ChartTexts(const std::string& svg)
    {
        std::vector<std::string> texts;
        xmlDocPtr doc = xmlReadMemory(svg.data(), static_cast<int>(svg.size()), "chart.svg", "UTF-8",
                                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
        if (doc == nullptr) {
            ADD_FAILURE() << "not well-formed:\n" << svg;
            return texts;
        }
        xmlXPathContextPtr context = xmlXPathNewContext(doc);
        xmlXPathRegisterNs(context, BAD_CAST "s", BAD_CAST "http://www.w3.org/2000/svg");
        xmlXPathObjectPtr found = xmlXPathEvalExpression(BAD_CAST "//s:text", context);
        for (int i = 0; found->nodesetval != nullptr && i < found->nodesetval->nodeNr; ++i) {
            xmlChar* content = xmlNodeGetContent(found->nodesetval->nodeTab[i]);
            texts.emplace_back(reinterpret_cast<const char*>(content));
            xmlFree(content);
        }
        xmlXPathFreeObject(found);
        xmlXPathFreeContext(context);
        xmlFreeDoc(doc);
        return texts;
    }
    static bool Has(const std::vector<std::string>& texts, const std::string& text)
    {
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }
};

TEST_F(TraceWritersTest, TimelineHasOneLinePerEventButLogLines)
{
    std::ostringstream out;
    TimelineWriter timeline(out);
    timeline.Write(Refresh(2000, "VOTER_SCENE", true, 0, "BACK_APP_ANIMATION"));
    timeline.Write(Event(2001, "log", {{"level", std::string("I")}, {"msg", std::string("hidden")}}));
    timeline.Write(Event(2002, "app.log", {{"bundle", std::string("com.g")}, {"msg", std::string("hidden")}}));
    timeline.Write(Event(12345, "settings.write", {{"key", std::string("a b")}, {"value", std::string()}}));
    timeline.Write(Event(99999999, "ipc.done", {{"reply", nullptr}, {"ok", false}}));
    timeline.Write(Event(7, "boot", {}));
    EXPECT_EQ(out.str(),
              "   2.000  mox.refresh  name=VOTER_SCENE status=true min=0 max=0 desc=BACK_APP_ANIMATION\n"
              "  12.345  settings.write  key=\"a b\" value=\"\"\n"
              "99999.999  ipc.done  reply=null ok=false\n"
              "   0.007  boot\n");
}

TEST_F(TraceWritersTest, JsonLinesHaveEveryEventAsOneObjectALine)
{
    std::ostringstream out;
    JsonlWriter jsonl(out);
    jsonl.Write(Event(5, "log", {{"level", std::string("E")}, {"msg", std::string("two\nlines \"quoted\"")}}));
    jsonl.Write(Event(6, "mox.package", {{"pkgs", std::vector<std::string>{"com.a:0:-1"}}}));
    EXPECT_EQ(out.str(),
              "{\"t\":5,\"ev\":\"log\",\"level\":\"E\",\"msg\":\"two\\nlines \\\"quoted\\\"\"}\n"
              "{\"t\":6,\"ev\":\"mox.package\",\"pkgs\":[\"com.a:0:-1\"]}\n");
}

TEST_F(TraceWritersTest, ChartIsWellFormedWithALabelledLanePerOutput)
{
    const std::vector<TraceEvent> events = {
        Event(1000, "mox.package", {{"pkgs", std::vector<std::string>{"com.tarvo.vistadeck:0:-1"}}}),
        Event(6000, "mox.package", {{"pkgs", std::vector<std::string>{"com.a&b<c>:20010002:-1"}}}),
        Refresh(1500, "VOTER_SCENE", true, 0, "BACK_APP_ANIMATION"),
        Refresh(1600, "VOTER_SCENE", true, 0, "\"odd\" 'desc' \x01\xFF"),
        Refresh(9000, "VOTER_SCENE", false, 0, "BACK_APP_ANIMATION"),
        Refresh(3000, "VOTER_THERMAL", true, 90, ""),
        Refresh(3500, "VOTER_POWER", true, 60, ""),
        Event(4000, "mox.light", {{"status", true}}),
        Event(4500, "game.fps", {{"bundle", std::string("com.g")}, {"cb", std::string("cb1")}, {"fps", int64_t{60}}}),
        Event(5000, "log", {{"msg", std::string("not charted")}}),
    };
    const std::vector<std::string> texts = ChartTexts(ChartWriter::Render(events, 20000));
    for (const char* label : {"foreground", "scene votes", "thermal and power votes", "votes VOTER_POWER",
                              "light factor", "game com.g/cb1", "time (s)", "0", "20"}) {
        EXPECT_TRUE(Has(texts, label)) << label;
    }
    for (const char* bar :
         {"com.tarvo.vistadeck", "com.a&b<c>", "BACK_APP_ANIMATION", "\"odd\" 'desc' ??", "min=0 max=90", "on", "60"}) {
        EXPECT_TRUE(Has(texts, bar)) << bar;
    }
    // With nothing traced the fixed lanes are still there.
    const std::vector<std::string> empty = ChartTexts(ChartWriter::Render({}, 0));
    EXPECT_TRUE(Has(empty, "thermal and power votes"));
    EXPECT_FALSE(Has(empty, "game com.g/cb1"));
}

}  // namespace
}  // namespace Tarvo::Emu
