#include "hilog.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "virtual_process.h"

namespace Tarvo::HiviewDFX {
namespace {

using Sinks = std::vector<std::shared_ptr<LogSink>>;

// Replaced whole on each change, so that a line takes it with one reference.
struct Outputs {
    std::shared_ptr<const Sinks> sinks = std::make_shared<const Sinks>();
    bool stderrEnabled = true;
    std::shared_ptr<const std::function<int64_t()>> nowMs;
};

struct OutputState {
    std::mutex mutex;
    Outputs outputs;
    LogLevel minLevel = LOG_DEBUG;
};

// The lowest level any output takes; above LOG_FATAL when there is none.
constinit std::atomic<int> gThreshold{LOG_DEBUG};
constexpr int NOBODY = LOG_FATAL + 1;

OutputState& State()
{
    // Never destroyed: threads may log during static destruction.
    static auto* state = new OutputState();
    return *state;
}

// Call with the state's lock held.
void UpdateThreshold(const OutputState& state)
{
    const bool anyOutput = state.outputs.stderrEnabled || !state.outputs.sinks->empty();
    gThreshold.store(anyOutput ? state.minLevel : NOBODY, std::memory_order_relaxed);
}

Outputs Snapshot()
{
    std::lock_guard<std::mutex> lock(State().mutex);
    return State().outputs;
}

int64_t WallClockMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string FormatArgs(const char* rawFormat, va_list args)
{
    // Most formats carry no privacy marker and are used as they are.
    const bool marked = strchr(rawFormat, '{') != nullptr;
    const std::string stripped = marked ? StripPrivacyMarkers(rawFormat) : std::string();
    const char* format = marked ? stripped.c_str() : rawFormat;
    va_list copy;
    va_copy(copy, args);
    char small[512];
    int needed = vsnprintf(small, sizeof(small), format, copy);
    va_end(copy);
    if (needed < 0) {
        return std::string(format);
    }
    if (static_cast<size_t>(needed) < sizeof(small)) {
        return std::string(small, static_cast<size_t>(needed));
    }
    std::string out(static_cast<size_t>(needed) + 1, '\0');
    vsnprintf(out.data(), out.size(), format, args);
    out.resize(static_cast<size_t>(needed));
    return out;
}

void WriteHumanLine(const LogRecord& record, int64_t nowMs)
{
    time_t seconds = static_cast<time_t>(nowMs / 1000);
    struct tm parts {};
    localtime_r(&seconds, &parts);
    fprintf(stderr, "%02d-%02d %02d:%02d:%02d.%03d %5d %5lld %c %X/%s: %s\n", parts.tm_mon + 1, parts.tm_mday,
            parts.tm_hour, parts.tm_min, parts.tm_sec, static_cast<int>(nowMs % 1000), record.pid,
            static_cast<long long>(record.tid), LevelLetter(record.level), record.domain, record.tag.c_str(),
            record.message.c_str());
}

}  // namespace

char LevelLetter(LogLevel level)
{
    switch (level) {
        case LOG_DEBUG:
            return 'D';
        case LOG_INFO:
            return 'I';
        case LOG_WARN:
            return 'W';
        case LOG_ERROR:
            return 'E';
        case LOG_FATAL:
            return 'F';
    }
    return '?';
}

std::string StripPrivacyMarkers(const char* format)
{
    static constexpr const char* kMarkers[] = {"{public}", "{private}"};
    std::string out;
    for (const char* p = format; *p != '\0'; ++p) {
        out.push_back(*p);
        if (*p != '%') {
            continue;
        }
        if (p[1] == '%') {
            out.push_back(*++p);
            continue;
        }
        for (const char* marker : kMarkers) {
            size_t length = strlen(marker);
            if (strncmp(p + 1, marker, length) == 0) {
                p += length;
                break;
            }
        }
    }
    return out;
}

void HiLogOutput::AddSink(const std::shared_ptr<LogSink>& sink)
{
    std::lock_guard<std::mutex> lock(State().mutex);
    auto sinks = std::make_shared<Sinks>(*State().outputs.sinks);
    sinks->push_back(sink);
    State().outputs.sinks = std::move(sinks);
    UpdateThreshold(State());
}

void HiLogOutput::RemoveSink(const std::shared_ptr<LogSink>& sink)
{
    std::lock_guard<std::mutex> lock(State().mutex);
    auto sinks = std::make_shared<Sinks>(*State().outputs.sinks);
    std::erase(*sinks, sink);
    State().outputs.sinks = std::move(sinks);
    UpdateThreshold(State());
}

void HiLogOutput::SetStderrEnabled(bool enabled)
{
    std::lock_guard<std::mutex> lock(State().mutex);
    State().outputs.stderrEnabled = enabled;
    UpdateThreshold(State());
}

void HiLogOutput::SetMinLevel(LogLevel level)
{
    std::lock_guard<std::mutex> lock(State().mutex);
    State().minLevel = level;
    UpdateThreshold(State());
}

void HiLogOutput::SetTimeSource(std::function<int64_t()> nowMs)
{
    auto source = nowMs ? std::make_shared<const std::function<int64_t()>>(std::move(nowMs)) : nullptr;
    std::lock_guard<std::mutex> lock(State().mutex);
    State().outputs.nowMs = std::move(source);
}

namespace {
// Hands a formatted line to the outputs that took it.
void Deliver(const LogRecord& record, const Sinks& sinks, const Outputs& outputs)
{
    for (const auto& sink : sinks) {
        sink->OnLog(record);
    }
    if (outputs.stderrEnabled) {
        WriteHumanLine(record, outputs.nowMs != nullptr ? (*outputs.nowMs)() : WallClockMs());
    }
}

Sinks Accepting(const Outputs& outputs, const LogRecord& record)
{
    Sinks taken;
    for (const auto& sink : *outputs.sinks) {
        if (sink->Accepts(record)) {
            taken.push_back(sink);
        }
    }
    return taken;
}
}  // namespace

void HiLogOutput::Write(LogRecord record)
{
    if (!HiLogIsLoggable(record.domain, record.tag.c_str(), record.level)) {
        return;
    }
    const Outputs outputs = Snapshot();
    Deliver(record, Accepting(outputs, record), outputs);
}

bool HiLogIsLoggable(unsigned int, const char*, LogLevel level)
{
    return level >= gThreshold.load(std::memory_order_relaxed);
}

int HiLogPrintArgs(LogType type, LogLevel level, unsigned int domain, const char* tag, const char* format, va_list args)
{
    if (!HiLogIsLoggable(domain, tag, level)) {
        return 0;
    }
    LogRecord record;
    record.type = type;
    record.level = level;
    record.domain = domain;
    record.tag = tag != nullptr ? tag : "";
    record.pid = VirtualProcess::Current()->Pid();
    const Outputs outputs = Snapshot();
    const Sinks sinks = Accepting(outputs, record);
    if (sinks.empty() && !outputs.stderrEnabled) {
        return 0;
    }
    record.tid = static_cast<int64_t>(syscall(SYS_gettid));
    record.message = FormatArgs(format != nullptr ? format : "", args);
    Deliver(record, sinks, outputs);
    return static_cast<int>(record.message.size());
}

#define TARVO_HILOG_LEVEL_FUNCTION(name, level)                                                \
    int HiLog::name(const HiLogLabel& label, const char* format, ...)                          \
    {                                                                                          \
        if (!HiLogIsLoggable(label.domain, label.tag, level)) {                                \
            return 0;                                                                          \
        }                                                                                      \
        va_list args;                                                                          \
        va_start(args, format);                                                                \
        int result = HiLogPrintArgs(label.type, level, label.domain, label.tag, format, args); \
        va_end(args);                                                                          \
        return result;                                                                         \
    }

TARVO_HILOG_LEVEL_FUNCTION(Debug, LOG_DEBUG)
TARVO_HILOG_LEVEL_FUNCTION(Info, LOG_INFO)
TARVO_HILOG_LEVEL_FUNCTION(Warn, LOG_WARN)
TARVO_HILOG_LEVEL_FUNCTION(Error, LOG_ERROR)
TARVO_HILOG_LEVEL_FUNCTION(Fatal, LOG_FATAL)
#undef TARVO_HILOG_LEVEL_FUNCTION

class LogCapture::Sink : public LogSink {
public:
    void OnLog(const LogRecord& record) override
    {
        std::lock_guard<std::mutex> lock(mutex);
        records.push_back(record);
    }
    mutable std::mutex mutex;
    std::vector<LogRecord> records;
};

LogCapture::LogCapture() : sink_(std::make_shared<Sink>())
{
    HiLogOutput::AddSink(sink_);
}

LogCapture::~LogCapture()
{
    HiLogOutput::RemoveSink(sink_);
}

std::vector<LogRecord> LogCapture::Records() const
{
    std::lock_guard<std::mutex> lock(sink_->mutex);
    return sink_->records;
}

std::vector<std::string> LogCapture::Messages(LogLevel level) const
{
    std::vector<std::string> out;
    for (const auto& record : Records()) {
        if (record.level == level) {
            out.push_back(record.message);
        }
    }
    return out;
}

std::vector<std::string> LogCapture::Lines() const
{
    std::vector<std::string> out;
    for (const auto& record : Records()) {
        out.push_back(std::string(1, LevelLetter(record.level)) + " " + record.message);
    }
    return out;
}

size_t LogCapture::Count(LogLevel level, const std::string& message) const
{
    size_t count = 0;
    for (const auto& record : Records()) {
        count += (record.level == level && record.message == message) ? 1 : 0;
    }
    return count;
}

void LogCapture::Clear()
{
    std::lock_guard<std::mutex> lock(sink_->mutex);
    sink_->records.clear();
}

}  // namespace Tarvo::HiviewDFX

extern "C" int HiLogPrint(Tarvo::HiviewDFX::LogType type, Tarvo::HiviewDFX::LogLevel level, unsigned int domain,
                          const char* tag, const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    int result = Tarvo::HiviewDFX::HiLogPrintArgs(type, level, domain, tag, fmt, args);
    va_end(args);
    return result;
}
