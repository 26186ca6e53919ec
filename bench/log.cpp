// Lines of the log against spdlog's.
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "families.h"
#include "platform/handle.h"
#include "xoSystem/xoLog.h"

// spdlog and fmt as headers, without warnings of their own.
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>

namespace bench {
namespace {

constexpr char kText[] = "a line of a usual length, with a number at its end: ";

std::size_t bytesSeen = 0;

void countBytes(const std::string& message, xo::xoLogType, const std::string&, void*) { bytesSeen += message.size(); }

__declspec(noinline) void plainHandler(const std::string& message) { bytesSeen += message.size(); }

// Hands each line to a function of the host, under the sink's lock, as this library does.
class CallbackSink final : public spdlog::sinks::base_sink<std::mutex> {
    void sink_it_(const spdlog::details::log_msg& message) override { bytesSeen += message.payload.size(); }
    void flush_() override {}
};

void measureSuppressed(Suite& suite) {
    xo::xoLog::edit().setLogTypeEnabled(xo::xoLogDebug, false);
    spdlog::logger peer("peer", std::make_shared<spdlog::sinks::null_sink_mt>());
    peer.set_level(spdlog::level::info);
    volatile bool flag = false;
    volatile bool* const flagPointer = &flag;
    constexpr int kLines = 1000;
    suite.compare("log", "suppressed line", kLines,
                  [] {
                      for (int i = 0; i < kLines; ++i) {
                          xo::xoLogObject(xo::xoLogDebug, "net") << kText << i;
                          keep(i);
                      }
                  },
                  {{"spdlog",
                    [&] {
                        for (int i = 0; i < kLines; ++i) {
                            peer.debug("a line of a usual length, with a number at its end: {}", i);
                            keep(i);
                        }
                    }},
                   {"limit: flag test", [flagPointer] {
                        for (int i = 0; i < kLines; ++i) {
                            if (*flagPointer) bytesSeen += 1;
                            keep(i);
                        }
                    }}});
}

void measureHandler(Suite& suite) {
    xo::xoLog& log = xo::xoLog::edit();
    log.installCustomHandler(&countBytes, nullptr);
    log.makeThreadSafe();
    spdlog::logger peer("peer", std::make_shared<CallbackSink>());
    const std::vector<Other> others{
        {"spdlog callback", [&] { peer.info("a line of a usual length, with a number at its end: {}", 12345); }},
        {"limit: one string to a function", [] {
             std::string text(kText);
             text += "12345";
             plainHandler(text);
         }}};
    suite.compare(
        "log", "line to a handler", 1, [] { xo::xoLogObject(xo::xoLogInfo) << kText << 12345; }, others);
    log.installCustomHandler(nullptr, nullptr);
}

void measureFile(Suite& suite) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / L"xoBench";
    std::filesystem::create_directories(folder);
    xo::xoLog& log = xo::xoLog::edit();
    log.installFileHandlerUtf8((folder / L"ours.log").u8string());
    const std::wstring rawPath = (folder / L"raw.log").wstring();
    const std::string rawLine = std::string("INFO : Tue Mar 03 14:05:09 2020 ") + kText + "12345\r\n";
    const auto raw = [&] {
        const xo::platform::FileHandle file(::CreateFileW(rawPath.c_str(), FILE_APPEND_DATA | SYNCHRONIZE,
                                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                                          nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD written = 0;
        ::WriteFile(file.get(), rawLine.data(), static_cast<DWORD>(rawLine.size()), &written, nullptr);
    };
    const auto stdio = [&] {
        std::FILE* const file = ::_wfopen(rawPath.c_str(), L"ab");
        std::fwrite(rawLine.data(), 1, rawLine.size(), file);
        std::fclose(file);
    };
    suite.compare("log", "line to a file, shared by processes", 1,
                  [] { xo::xoLogObject(xo::xoLogInfo) << kText << 12345; },
                  {{"fopen, fwrite, fclose", stdio}, {"limit: CreateFile, WriteFile, Close", raw}});
    xo::xoLog::destroyInstance();
    xo::xoLog::createInstance(false);
    xo::xoLog::edit().installFileHandlerUtf8((folder / L"ours.log").u8string());
    suite.compare("log", "line to a file, one process", 1, [] { xo::xoLogObject(xo::xoLogInfo) << kText << 12345; },
                  {{"fopen, fwrite, fclose", stdio}, {"limit: CreateFile, WriteFile, Close", raw}});
    xo::xoLog::edit().removeFileHandler();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

// spdlog's file sinks. One that flushes passes each line to Windows, as this library does; one that buffers loses its
// last lines with the process.
spdlog::logger fileLogger(const spdlog::sink_ptr& sink, bool flushes) {
    spdlog::logger logger("file", sink);
    logger.set_pattern("%l : %a %b %d %H:%M:%S %Y %v");
    if (flushes) logger.flush_on(spdlog::level::trace);
    return logger;
}

void write(spdlog::logger& logger, int lines) {
    for (int i = 0; i < lines; ++i) logger.info("a line of a usual length, with a number at its end: {}", 12345);
}

void writeOurs(int lines) {
    for (int i = 0; i < lines; ++i) xo::xoLogObject(xo::xoLogInfo) << kText << 12345;
}

template <class Function>
void inThreads(const Function& function) {
    constexpr int kThreads = 8;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) threads.emplace_back(function);
    for (std::thread& thread : threads) thread.join();
}

void measureOpenFile(Suite& suite) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / L"xoBench";
    std::filesystem::create_directories(folder);
    const auto fileIn = [&](const char* name) { return (folder / name).string(); };
    constexpr int kLines = 200;
    constexpr int kFileBytes = 1 << 20;
    {
        xo::xoLog::destroyInstance();
        xo::xoLog::createInstance(true);
        auto basic = fileLogger(std::make_shared<spdlog::sinks::basic_file_sink_mt>(fileIn("basic.log")), true);
        auto rotating = fileLogger(
            std::make_shared<spdlog::sinks::rotating_file_sink_mt>(fileIn("rotating.log"), kFileBytes, 3), true);
        auto buffered = fileLogger(std::make_shared<spdlog::sinks::basic_file_sink_mt>(fileIn("buffered.log")), false);
        auto rotatingBuffered = fileLogger(
            std::make_shared<spdlog::sinks::rotating_file_sink_mt>(fileIn("rotating 2.log"), kFileBytes, 3), false);
        const xo::platform::FileHandle raw(::CreateFileW((folder / L"raw.log").c_str(), FILE_APPEND_DATA,
                                                         FILE_SHARE_READ, nullptr, OPEN_ALWAYS, 0, nullptr));
        const std::string rawLine = std::string("INFO : Tue Mar 03 14:05:09 2020 ") + kText + "12345\r\n";
        const auto writeRaw = [&] {
            DWORD written = 0;
            for (int i = 0; i < kLines; ++i)
                ::WriteFile(raw.get(), rawLine.data(), static_cast<DWORD>(rawLine.size()), &written, nullptr);
        };

        const std::string ours = fileIn("ours.log");
        xo::xoLog::edit().installFileHandlerExUtf8(ours, xo::xoLogFileKeepOpen, -1, 0);
        suite.compare("log", "line to an open file", kLines, [] { writeOurs(kLines); },
                      {{"spdlog, flushed", [&] { write(basic, kLines); }},
                       {"spdlog, buffered", [&] { write(buffered, kLines); }},
                       {"limit: WriteFile", writeRaw}});
        suite.compare("log", "line to an open file, 8 threads", kLines * 8,
                      [] { inThreads([] { writeOurs(kLines); }); },
                      {{"spdlog, flushed", [&] { inThreads([&] { write(basic, kLines); }); }},
                       {"spdlog, buffered", [&] { inThreads([&] { write(buffered, kLines); }); }}});
        xo::xoLog::edit().installFileHandlerExUtf8(ours, xo::xoLogFileKeepOpen, kFileBytes, 3);
        suite.compare("log", "line to an open file, rotated at 1 MB", kLines, [] { writeOurs(kLines); },
                      {{"spdlog, rotating, flushed", [&] { write(rotating, kLines); }},
                       {"spdlog, rotating, buffered", [&] { write(rotatingBuffered, kLines); }}});
        xo::xoLog::edit().removeFileHandler();
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

}  // namespace

void measureLog(Suite& suite) {
    if (!suite.wants("log")) return;
    xo::xoLog::createInstance(false);
    xo::xoLog::edit().setEchoToConsole(false);
    measureSuppressed(suite);
    measureHandler(suite);
    measureFile(suite);
    measureOpenFile(suite);
    xo::xoLog::destroyInstance();
}

}  // namespace bench
