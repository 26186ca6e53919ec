// Reads a CSV file through the parser: the file, the copies of a reader, progress and errors.
#include "xoSystem/xoCsvFileReader.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

#include "platform/openFile.h"
#include "platform/wideText.h"
#include "stream/csvParser.h"
#include "xoSystem/xoProgress.h"

namespace xo {
namespace {

constexpr char kOpenFailed[] = "Failed to open the file";

// Shares everything: a file that another program appends to or wants to delete can be read.
platform::FileHandle openForReading(const std::wstring& path) {
    return platform::openFile(path, GENERIC_READ, platform::kShareAll, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
}

}  // namespace

struct xoCsvFileReader::Private {
    std::string fileName;        // as it was given; empty until one is set
    std::wstring fullPath;       // absolute: a copy opens the same file when the working folder has changed
    bool isOpenPending = false;  // in a copy, until it first parses
    platform::FileHandle file;
    stream::CsvDialect dialect;
    stream::CsvParser parser;  // reads from file while isStarted
    bool isStarted = false;
    unsigned maxColumnCount = 0;  // of the parser; kept here for a copy, whose parser has read nothing
    std::string lastError;
    xoProgressScope* scope = nullptr;  // of the call under way

    // Functions that return a bool have stored the last error when it is false.
    void copyFrom(const Private& other);
    void setFileName(const std::string& path);
    bool start();
    bool openAndStart();
    template <class Step>
    bool parse(Step&& step);
    template <class Step>
    bool attempt(Step&& step);
    bool fail(const char* error);
    std::uint64_t fileSize() const;
    std::size_t read(char* out, std::size_t capacity);  // the parser's source
};

// A copy does not share the handle, whose position both would move. It opens the file again when it first parses.
void xoCsvFileReader::Private::copyFrom(const Private& other) {
    fileName = other.fileName;
    fullPath = other.fullPath;
    isOpenPending = !fileName.empty();
    dialect = other.dialect;
    parser.setTable(other.parser.table());
    maxColumnCount = other.maxColumnCount;
    lastError = other.lastError;
}

void xoCsvFileReader::Private::setFileName(const std::string& path) {
    isStarted = isOpenPending = false;
    file.reset();
    fileName.clear();
    attempt([&] {
        fullPath = platform::toExtendedPath(platform::toWide(path));
        platform::FileHandle opened = openForReading(fullPath);
        fileName = path;  // also after a failure, so that setting the same name does not try again
        file = std::move(opened);
        return file || fail(kOpenFailed);
    });
}

bool xoCsvFileReader::Private::start() {
    lastError.clear();
    parser.releaseTable();
    maxColumnCount = 0;
    isStarted = attempt([this] { return openAndStart(); });
    return isStarted;
}

bool xoCsvFileReader::Private::openAndStart() {
    if (std::exchange(isOpenPending, false)) file = openForReading(fullPath);
    if (!file) return fail(kOpenFailed);
    LARGE_INTEGER size{};
    // The handle is kept from one parse to the next, and may be anywhere in the file.
    const bool isAtStart = ::GetFileSizeEx(file.get(), &size) &&
                           ::SetFilePointerEx(file.get(), LARGE_INTEGER{}, /*lpNewFilePointer=*/nullptr, FILE_BEGIN);
    if (!isAtStart) return fail("Failed to read the file");  // a pipe or a device
    parser.start(dialect, static_cast<std::uint64_t>(size.QuadPart),
                 [this](char* out, std::size_t capacity) { return read(out, capacity); });
    return true;
}

// While a parse is under way, the size that it began with.
std::uint64_t xoCsvFileReader::Private::fileSize() const {
    if (isStarted) return parser.size();
    LARGE_INTEGER size{};
    return file && ::GetFileSizeEx(file.get(), &size) ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

// Progress is reported before a block is read, with what has been parsed of the blocks before it. A cancellation ends
// the parse as a read error does.
std::size_t xoCsvFileReader::Private::read(char* out, std::size_t capacity) {
    constexpr std::size_t kMaxTransfer = std::size_t{1} << 30;  // ReadFile takes a 32-bit size
    if (scope && !scope->advanceTo(parser.parsedSize())) {
        parser.fail("Canceled");
        return 0;
    }
    DWORD got = 0;
    const auto wanted = static_cast<DWORD>((std::min)(capacity, kMaxTransfer));
    return ::ReadFile(file.get(), out, wanted, &got, /*lpOverlapped=*/nullptr) ? got : 0;
}

// Runs a step of the parser. After an exception the parser has failed too, so that later calls fail the same way.
template <class Step>
bool xoCsvFileReader::Private::parse(Step&& step) {
    const bool isDone = attempt([&] { return step() || fail(parser.error().c_str()); });
    if (!isDone && parser.error().empty()) parser.fail(lastError);
    maxColumnCount = parser.maxColumnCount();
    return isDone;
}

// Runs a step. The exception that ends it becomes the last error.
template <class Step>
bool xoCsvFileReader::Private::attempt(Step&& step) {
    try {
        return step();
    } catch (const std::exception& error) {
        return fail(error.what());
    } catch (...) {
        return fail("Unknown error");
    }
}

bool xoCsvFileReader::Private::fail(const char* error) {
    lastError = error;
    return false;
}

xoCsvFileReader::xoCsvFileReader(bool enableTypeGuess) : mPrivate(std::make_unique<Private>()) {
    mPrivate->dialect.guessTypes = enableTypeGuess;
}

xoCsvFileReader::~xoCsvFileReader() = default;

xoCsvFileReader::xoCsvFileReader(const xoCsvFileReader& other) : mPrivate(std::make_unique<Private>()) {
    mPrivate->copyFrom(*other.mPrivate);
}

// Copies first, so that an exception leaves this reader unchanged.
xoCsvFileReader& xoCsvFileReader::operator=(const xoCsvFileReader& other) {
    if (this == &other) return *this;
    xoCsvFileReader copy(other);
    mPrivate.swap(copy.mPrivate);
    return *this;
}

void xoCsvFileReader::setFileName(const std::string& path) {
    if (path != mPrivate->fileName) mPrivate->setFileName(path);
}

void xoCsvFileReader::setColumnDelimiter(char delimiter) { mPrivate->dialect.columnDelimiter = delimiter; }

void xoCsvFileReader::setStringDelimiter(char delimiter) { mPrivate->dialect.stringDelimiter = delimiter; }

void xoCsvFileReader::setEnableTypeGuess(bool enable) { mPrivate->dialect.guessTypes = enable; }

bool xoCsvFileReader::parseCsvFile() {
    bool finished = false;
    return startParsing() && parseNext(finished, false, (std::numeric_limits<std::uint64_t>::max)());
}

bool xoCsvFileReader::parseCsvFile(xoProgressNotifier* progress) {
    if (!progress) return parseCsvFile();
    if (!startParsing()) return false;
    Private& self = *mPrivate;
    xoProgressScope work(progress, self.fileSize(), {}, ProgressUnitBytes);
    self.scope = &work;  // parseNext lets no exception out, so the pointer is reset in any case
    bool finished = false;
    const bool isDone = parseNext(finished, false, (std::numeric_limits<std::uint64_t>::max)());
    self.scope = nullptr;
    if (isDone) {  // the last block has not been counted yet
        work.advanceTo(self.fileSize());
        work.finish();
    }
    return isDone;
}

bool xoCsvFileReader::parseFirst(bool& finished, std::uint64_t rowCount) {
    finished = false;
    return startParsing() && parseNext(finished, false, rowCount);
}

bool xoCsvFileReader::parseNext(bool& finished, bool clearTable, std::uint64_t rowCount) {
    finished = false;
    Private& self = *mPrivate;
    if (!self.isStarted && !self.start()) return false;
    if (clearTable) self.parser.clearTable();
    self.parser.setGuessTypes(self.dialect.guessTypes);  // unlike the delimiters it may change in the midst of a file
    return self.parse([&] { return self.parser.parse(rowCount, finished); });
}

const xoCsvFileReader::Table& xoCsvFileReader::getTable() const { return mPrivate->parser.table(); }

unsigned int xoCsvFileReader::getMaxColumnCount() const { return mPrivate->maxColumnCount; }

const std::string& xoCsvFileReader::getLastError() const { return mPrivate->lastError; }

std::uint64_t xoCsvFileReader::getParsedByteCount() const {
    return mPrivate->isStarted ? mPrivate->parser.parsedSize() : 0;
}

std::uint64_t xoCsvFileReader::getFileByteCount() const { return mPrivate->fileSize(); }

bool xoCsvFileReader::startParsing() { return mPrivate->start(); }

bool xoCsvFileReader::getData(bool& moreInput) {
    moreInput = false;
    Private& self = *mPrivate;
    const bool isDone = self.isStarted && self.parse([&] { return self.parser.refill(moreInput); });
    if (!isDone) moreInput = false;
    return isDone;
}

}  // namespace xo
