#include "zel_device_app.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "chart_writer.h"
#include "config_check.h"
#include "control_channel.h"
#include "control_client.h"
#include "input_text.h"
#include "jsonl_writer.h"
#include "run_dir.h"
#include "scenario_parser.h"
#include "serving_device.h"
#include "timeline_writer.h"
#include "virtual_clock.h"

namespace Tarvo::Emu {
namespace {
std::string SocketPath(const CommandLine& line)
{
    return line.dir.value_or(RunDir::DefaultPath()) + "/" + ControlChannel::kSocketName;
}
}  // namespace

ZelDeviceApp::ZelDeviceApp(DeviceFactory factory, std::ostream& out, std::ostream& err)
    : factory_(std::move(factory)), out_(out), err_(err)
{
}

int ZelDeviceApp::Main(const std::vector<std::string>& args)
{
    CommandLine line;
    std::string error;
    if (!CommandLine::Parse(args, &line, &error)) {
        err_ << "zel_device: " << error << '\n' << CommandLine::Usage();
        return EXIT_SCENARIO_ERROR;
    }
    switch (line.mode) {
        case CommandLine::Mode::HELP:
            out_ << CommandLine::Usage();
            return EXIT_OK;
        case CommandLine::Mode::VERSION:
            out_ << "zel_device " << VERSION << '\n';
            return EXIT_OK;
        case CommandLine::Mode::CHECK:
            return Check(line);
        case CommandLine::Mode::CHECK_CONFIG:
            return CheckConfig(line);
        case CommandLine::Mode::SERVE:
            return Serve(line);
        case CommandLine::Mode::SEND:
            return Send(line);
        case CommandLine::Mode::TRACE:
            return ControlRequest(SocketPath(line), line.follow ? "trace -f" : "trace", {}, out_, err_);
        case CommandLine::Mode::RUN:
            break;
    }
    return Run(line);
}

bool ZelDeviceApp::Load(const std::string& path, Scenario* scenario)
{
    ParseResult result = ScenarioParser::ParseFile(path);
    for (const auto& message : result.errors) {
        err_ << message << '\n';
    }
    if (!result.Ok()) {
        err_ << path << ": " << result.errors.size() << (result.errors.size() == 1 ? " error" : " errors")
             << ", nothing played\n";
        return false;
    }
    *scenario = std::move(result.scenario);
    return true;
}

int ZelDeviceApp::Check(const CommandLine& line)
{
    Scenario scenario;
    if (!Load(line.scenario, &scenario)) {
        return EXIT_SCENARIO_ERROR;
    }
    out_ << line.scenario << ": ok, " << scenario.lines.size() << " commands, ends at " << scenario.endTime << " ms\n";
    return EXIT_OK;
}

int ZelDeviceApp::CheckConfig(const CommandLine& line)
{
    const ConfigCheck check = CheckConfigFile(line.scenario);
    for (const ConfigFinding& finding : check.findings) {
        out_ << FormatFinding(finding) << '\n';
    }
    return check.loads ? EXIT_OK : EXIT_SCENARIO_ERROR;
}

int ZelDeviceApp::Run(const CommandLine& line)
{
    Scenario scenario;
    if (!Load(line.scenario, &scenario)) {
        return EXIT_SCENARIO_ERROR;
    }
    std::ofstream traceFile;
    if (line.trace && *line.trace != "-") {
        traceFile.open(*line.trace, std::ios::trunc);
        if (!traceFile) {
            err_ << "zel_device: cannot write the trace to " << Shown(*line.trace) << '\n';
            return EXIT_SCENARIO_ERROR;
        }
    }
    if (line.chart && !std::ofstream(*line.chart, std::ios::trunc)) {
        err_ << "zel_device: cannot write the chart to " << Shown(*line.chart) << '\n';
        return EXIT_SCENARIO_ERROR;
    }
    std::ostream* trace = !line.trace ? nullptr : (*line.trace == "-" ? &out_ : &traceFile);
    try {
        return Play(line, scenario, trace);
    } catch (const std::exception& e) {
        return Failed(std::string("an exception came out of the device: ") + e.what());
    } catch (...) {
        return Failed("an exception came out of the device");
    }
}

int ZelDeviceApp::Play(const CommandLine& line, const Scenario& scenario, std::ostream* trace)
{
    // A device in processes shares its virtual time with them.
    if (!line.realtime && !line.processes) {
        VirtualClock::Install();
    }
    DeviceOptions options;
    options.scenarioDir = std::filesystem::path(line.scenario).parent_path().string();
    options.scenarioDir = options.scenarioDir.empty() ? "." : options.scenarioDir;
    options.dataDir = line.dataDir.value_or("");
    options.keepDataDir = line.dataDir.has_value();
    options.realtime = line.realtime;
    options.log = line.log;
    options.processes = line.processes;
    device_ = factory_(options);
    if (device_ == nullptr) {
        return Failed("the device could not be made");
    }
    ScenarioPlayer player(*device_, err_, PlayerOptions{line.realtime, VirtualClock::kDefaultQuietLimit});
    TimelineWriter timeline(out_);
    std::optional<JsonlWriter> jsonl;
    if (trace != nullptr) {
        player.AddSink(&jsonl.emplace(*trace));
    }
    if (!line.quiet && line.trace != "-") {
        player.AddSink(&timeline);
    }
    const PlayOutcome outcome = player.Play(scenario);
    if (line.chart) {
        std::ofstream(*line.chart, std::ios::trunc)
            << ChartWriter::Render(device_->GetTrace().EventsSince(0), player.ReachedTime());
    }
    switch (outcome) {
        case PlayOutcome::PLAYED:
            return EXIT_OK;
        case PlayOutcome::EXPECT_FAILED:
            return EXIT_EXPECT_FAILED;
        case PlayOutcome::REFUSED:
            return EXIT_DEVICE_FAILED;
        case PlayOutcome::DEVICE_FAILED:
            break;
    }
    return Failed("the device or the service failed; the run stopped at " + std::to_string(player.ReachedTime()) +
                  " ms");
}

int ZelDeviceApp::Failed(const std::string& message)
{
    abandoned_ = true;
    err_ << "zel_device: " << message << '\n';
    return EXIT_DEVICE_FAILED;
}

}  // namespace Tarvo::Emu

namespace Tarvo::Emu {

int ZelDeviceApp::Send(const CommandLine& line)
{
    std::vector<std::string> lines = line.lines;
    if (lines.empty()) {
        for (std::string text; std::getline(std::cin, text);) {
            lines.push_back(text);
        }
    }
    return ControlRequest(SocketPath(line), "send", lines, out_, err_);
}

int ZelDeviceApp::Serve(const CommandLine& line)
{
    std::string error;
    std::unique_ptr<RunDir> runDir = RunDir::Open(line.dir.value_or(RunDir::DefaultPath()), &error);
    if (runDir == nullptr) {
        err_ << "zel_device: " << error << '\n';
        return EXIT_DEVICE_FAILED;
    }
    DeviceOptions options;
    options.scenarioDir = ".";
    options.dataDir = line.dataDir.value_or("");
    options.keepDataDir = line.dataDir.has_value();
    options.realtime = true;
    options.log = line.log;
    // Every emulated process a real one, reachable through the run folder.
    options.processes = true;
    options.runDir = runDir->Path();
    device_ = factory_(options);
    if (device_ == nullptr || (line.config && !device_->UseConfig(*line.config, &error)) || !device_->Boot(&error)) {
        return Failed(error.empty() ? "the device could not be made" : error);
    }
    ServingDevice serving(*device_, VirtualClock::kDefaultQuietLimit);
    if (!serving.Listen(runDir->Path() + "/" + ControlChannel::kSocketName, &error)) {
        return Failed(error);
    }
    if (interruptHook_) {
        interruptHook_([&serving](int) { serving.Stop(); });
    }
    // Said once the device answers: whoever started it may go on from here.
    out_ << "zel_device: serving in " << runDir->Path() << std::endl;
    serving.Serve();
    if (interruptHook_) {
        interruptHook_(nullptr);
    }
    device_->Shutdown();
    // Its processes end before their run folder goes.
    device_.reset();
    return EXIT_OK;
}

}  // namespace Tarvo::Emu
