#include "device_agent.h"

#include <gtest/gtest.h>

#include "ipc_object_stub.h"

namespace Tarvo::Emu {
namespace {

RawRequest SampleRaw()
{
    RawRequest raw;
    raw.caller = {CallerSpec::Kind::BUNDLE, "com.example.game"};
    raw.code = 77;
    raw.writeToken = false;
    raw.token = u"some.Token";
    raw.fields = {{RawField::Kind::STRING, "text", {}},
                  {RawField::Kind::INT32, "", {static_cast<uint32_t>(-5)}},
                  {RawField::Kind::UINT32_VECTOR, "", {1, 2, 3}},
                  {RawField::Kind::BYTES, std::string("\0\1\2", 3), {}}};
    raw.oneWay = true;
    raw.bundle = "com.example.game";
    raw.callback = "cb1";
    return raw;
}

AgentControl Control(AgentCode code)
{
    AgentControl control;
    control.code = code;
    return control;
}

void ExpectSame(const AgentControl& a, const AgentControl& b)
{
    EXPECT_EQ(a.code, b.code);
    EXPECT_EQ(a.key, b.key);
    EXPECT_EQ(a.value, b.value);
    EXPECT_EQ(a.bundle, b.bundle);
    EXPECT_EQ(a.number, b.number);
    EXPECT_EQ(a.id, b.id);
    EXPECT_EQ(a.state, b.state);
    EXPECT_EQ(a.flag, b.flag);
    EXPECT_EQ(a.time, b.time);
    EXPECT_EQ(a.package.bundle, b.package.bundle);
    EXPECT_EQ(a.package.uid, b.package.uid);
    EXPECT_EQ(a.package.game, b.package.game);
    EXPECT_EQ(a.package.system, b.package.system);
    EXPECT_EQ(a.package.type, b.package.type);
    EXPECT_EQ(a.order, b.order);
}

// Each control, with the arguments it carries, comes out of its parcel as it went in.
TEST(DeviceAgentTest, EveryControlRoundTrips)
{
    std::vector<AgentControl> controls;
    AgentControl param = Control(AgentCode::PRESET_PARAM);
    param.key = "const.window.foldscreen.type";
    param.value = "6,2,0,0";
    controls.push_back(param);
    AgentControl setting = Control(AgentCode::PRESET_SETTING);
    setting.key = "user_set_resolution_mode";
    setting.value = "";
    controls.push_back(setting);
    AgentControl up = Control(AgentCode::SET_UP);
    up.flag = true;
    controls.push_back(up);
    AgentControl ability = Control(AgentCode::ABILITY);
    ability.id = 3308;
    controls.push_back(ability);
    AgentControl install = Control(AgentCode::INSTALL);
    install.package = {"com.example.game", 20010001, true, true, -1};
    controls.push_back(install);
    AgentControl remove = Control(AgentCode::REMOVE);
    remove.key = "com.example.game";
    controls.push_back(remove);
    AgentControl publish = Control(AgentCode::PUBLISH);
    publish.key = "usual.event.POWER_SAVE_MODE_CHANGED";
    publish.number = -7;
    controls.push_back(publish);
    publish.bundle = "";
    publish.number.reset();
    controls.push_back(publish);
    AgentControl state = Control(AgentCode::APP_STATE);
    state.key = "com.example.app";
    state.id = 2001;
    state.state = 4;
    state.flag = true;
    controls.push_back(state);
    AgentControl light = Control(AgentCode::LIGHT);
    light.id = 2;
    controls.push_back(light);
    controls.push_back(Control(AgentCode::BOOT));
    controls.push_back(Control(AgentCode::SHUTDOWN));
    AgentControl fault = Control(AgentCode::FAULT);
    fault.id = 2000;
    fault.flag = true;
    controls.push_back(fault);
    AgentControl watch = Control(AgentCode::WATCH);
    watch.order = RawOrder(9, SampleRaw());
    controls.push_back(watch);
    for (RequestOrder order : {SceneOrder(2, "com.a", "BACK_DESKTOP", 1), ResolutionOrder(3, -1, 2),
                               ThermalOrder(4, {{101, 90}, {101, 60}, {7, 0}}), GameFpsOrder(5, "com.b", 120),
                               RegisterOrder(6, "cb1"), RawOrder(7, SampleRaw())}) {
        AgentControl send = Control(AgentCode::SEND);
        send.order = order;
        controls.push_back(send);
    }
    controls.push_back(Control(AgentCode::NEXT_DUE));
    AgentControl move = Control(AgentCode::MOVE);
    move.time = 86'400'000'123;
    controls.push_back(move);
    AgentControl death = Control(AgentCode::DEATH);
    death.id = 2003;
    controls.push_back(death);
    for (const AgentControl& control : controls) {
        SCOPED_TRACE(static_cast<int>(control.code));
        MessageParcel data;
        ASSERT_TRUE(WriteControl(control, data));
        AgentControl read;
        ASSERT_TRUE(ReadControl(data, &read));
        ExpectSame(read, control);
        EXPECT_EQ(read.object, nullptr);
        EXPECT_EQ(data.GetReadableBytes(), 0u);
    }
}

TEST(DeviceAgentTest, RepliesAndTraceEventsRoundTrip)
{
    AgentReply reply;
    reply.ok = false;
    reply.error = "cannot write setting \"x\"";
    reply.outcome = {true, 32, int64_t{-3}};
    reply.due = 1500;
    MessageParcel data;
    ASSERT_TRUE(WriteReply(reply, data));
    AgentReply read;
    ASSERT_TRUE(ReadReply(data, &read));
    EXPECT_EQ(read.ok, false);
    EXPECT_EQ(read.error, reply.error);
    EXPECT_EQ(read.outcome.sent, true);
    EXPECT_EQ(read.outcome.status, 32);
    EXPECT_EQ(read.outcome.result, TraceValue{int64_t{-3}});
    EXPECT_EQ(read.due, 1500);

    const std::vector<TraceField> fields = {{"line", int64_t{4}},
                                            {"reply", nullptr},
                                            {"status", true},
                                            {"msg", std::string("a \"quoted\" text")},
                                            {"pkgs", std::vector<std::string>{"com.a:0:-1", ""}}};
    MessageParcel event;
    ASSERT_TRUE(WriteEvent("mox.package", fields, event));
    std::string ev;
    std::vector<TraceField> got;
    ASSERT_TRUE(ReadEvent(event, &ev, &got));
    EXPECT_EQ(ev, "mox.package");
    ASSERT_EQ(got.size(), fields.size());
    for (size_t i = 0; i < fields.size(); ++i) {
        EXPECT_EQ(got[i].name, fields[i].name);
        EXPECT_EQ(got[i].value, fields[i].value);
    }
}

// What a broken or hostile peer sends is refused before anything is made from its counts.
TEST(DeviceAgentTest, MalformedParcelsAreRefused)
{
    AgentControl control = Control(AgentCode::SEND);
    control.order = RawOrder(1, SampleRaw());
    MessageParcel good;
    ASSERT_TRUE(WriteControl(control, good));
    const std::vector<uint8_t> bytes(good.GetData(), good.GetData() + good.GetDataSize());
    for (size_t cut = 0; cut < bytes.size(); cut += 4) {
        MessageParcel shortened;
        ASSERT_TRUE(shortened.ParseFrom(bytes.data(), cut));
        AgentControl read;
        EXPECT_FALSE(ReadControl(shortened, &read)) << "cut at " << cut;
    }
    MessageParcel unknownCode;
    control.code = static_cast<AgentCode>(kLastAgentCode + 1);
    ASSERT_TRUE(WriteControl(control, unknownCode));
    AgentControl read;
    EXPECT_FALSE(ReadControl(unknownCode, &read));

    MessageParcel huge;
    huge.WriteInterfaceToken(kHubDescriptor);
    huge.WriteString("log");
    huge.WriteUint32(0x7fffffff);
    std::string ev;
    std::vector<TraceField> fields;
    EXPECT_FALSE(ReadEvent(huge, &ev, &fields));
    EXPECT_TRUE(fields.empty());
    MessageParcel badKind;
    badKind.WriteInterfaceToken(kHubDescriptor);
    badKind.WriteString("log");
    badKind.WriteUint32(1);
    badKind.WriteString("level");
    badKind.WriteInt32(9);
    EXPECT_FALSE(ReadEvent(badKind, &ev, &fields));
}

}  // namespace
}  // namespace Tarvo::Emu
