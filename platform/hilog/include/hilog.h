#ifndef TARVO_HILOG_HILOG_H
#define TARVO_HILOG_HILOG_H

// The platform log. One call family: type, level, domain, tag and a printf-style format in which
// "{public}" and "{private}" after a '%' are accepted and stripped; every argument is printed.
// Each line goes to every registered sink (tests and the device trace read them) and, unless
// silenced, as a human line on stderr:
//   MM-DD HH:MM:SS.mmm pid tid L DOMAIN/TAG: text
// A line is formatted only when some output takes it; a level nobody takes costs one atomic load.

#include <cstdarg>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Tarvo::HiviewDFX {

enum LogType { LOG_APP = 0, LOG_INIT = 1, LOG_CORE = 3 };
enum LogLevel { LOG_DEBUG = 3, LOG_INFO = 4, LOG_WARN = 5, LOG_ERROR = 6, LOG_FATAL = 7 };

struct HiLogLabel {
    LogType type;
    unsigned int domain;
    const char* tag;
};

struct LogRecord {
    LogType type = LOG_CORE;
    LogLevel level = LOG_INFO;
    unsigned int domain = 0;
    std::string tag;
    std::string message;  // fully formatted
    int32_t pid = 0;      // the virtual process that logged
    int64_t tid = 0;
};

// One letter per level: D, I, W, E, F.
char LevelLetter(LogLevel level);
// The format with the privacy markers removed ("%{public}d" -> "%d").
std::string StripPrivacyMarkers(const char* format);

class LogSink {
public:
    virtual ~LogSink() = default;
    // Whether the sink takes a line; asked before it is formatted (the record's message is empty).
    virtual bool Accepts(const LogRecord& /*record*/) const { return true; }
    // Called on the logging thread, without any log lock held.
    virtual void OnLog(const LogRecord& record) = 0;
};

class HiLogOutput {
public:
    static void AddSink(const std::shared_ptr<LogSink>& sink);
    static void RemoveSink(const std::shared_ptr<LogSink>& sink);
    static void SetStderrEnabled(bool enabled);
    // Lines below `level` go nowhere (LOG_DEBUG, the default, lets every line through).
    static void SetMinLevel(LogLevel level);
    // Milliseconds for the human line's time stamp; the wall clock when unset.
    static void SetTimeSource(std::function<int64_t()> nowMs);
    static void Write(LogRecord record);
};

class HiLog {
public:
    static int Debug(const HiLogLabel& label, const char* format, ...);
    static int Info(const HiLogLabel& label, const char* format, ...);
    static int Warn(const HiLogLabel& label, const char* format, ...);
    static int Error(const HiLogLabel& label, const char* format, ...);
    static int Fatal(const HiLogLabel& label, const char* format, ...);
};

// Whether a line of `level` would reach any output; one atomic load, so that callers can skip the
// work of their arguments.
bool HiLogIsLoggable(unsigned int domain, const char* tag, LogLevel level);

int HiLogPrintArgs(LogType type, LogLevel level, unsigned int domain, const char* tag, const char* format,
                   va_list args);

// Collects every record while it lives; for tests.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogRecord> Records() const;
    // Messages of one level, in order.
    std::vector<std::string> Messages(LogLevel level) const;
    // Every message as "L text", in order (L the level letter).
    std::vector<std::string> Lines() const;
    size_t Count(LogLevel level, const std::string& message) const;
    bool Contains(LogLevel level, const std::string& message) const { return Count(level, message) > 0; }
    void Clear();

private:
    class Sink;
    std::shared_ptr<Sink> sink_;
};

}  // namespace Tarvo::HiviewDFX

extern "C" int HiLogPrint(Tarvo::HiviewDFX::LogType type, Tarvo::HiviewDFX::LogLevel level, unsigned int domain,
                          const char* tag, const char* fmt, ...);

#endif  // TARVO_HILOG_HILOG_H
