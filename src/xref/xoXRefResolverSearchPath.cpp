// Finds the file that a document refers to: the settings, the index of the search paths, and the order of the rules.
#include "xoSystem/xoXRefResolverSearchPath.h"

#include <algorithm>
#include <functional>
#include <set>
#include <tuple>

#include "files/pathParts.h"
#include "platform/pathSyntax.h"
#include "platform/quietErrors.h"
#include "platform/slimLock.h"
#include "platform/wideText.h"
#include "xoSystem/xoDirUtils.h"
#include "xref/fileIndex.h"
#include "xref/nameKey.h"
#include "xref/reference.h"

namespace xo {
namespace {

using xref::FileIndex;
using xref::Reference;
using Match = xoXRefResolverSearchPath::Match;

// Absolute, without the prefix of an extended path and without a separator at its end unless it is a root. Empty for
// what names nothing.
std::wstring absolutePath(std::wstring_view path) {
    std::wstring full = platform::toExtendedPath(std::wstring(path));
    // The path of a volume without a drive letter, "\\?\Volume{...}\", means nothing without the prefix.
    if (std::wstring plain = platform::withoutExtendedPrefix(full); platform::isAbsolutePath(plain))
        full = std::move(plain);
    full.resize(files::withoutTrailingSeparators(full).size());
    return full;
}

// UTF-8, with "/".
std::string slashed(std::wstring_view path) {
    std::string text = platform::toUtf8(path);
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

// The folder of a file, and from there as many folders up, but not above the root; it ends with "/". Empty for a
// relative path, since the working folder says nothing about the document, and for what names no file.
std::string folderOf(const std::string& file, std::size_t leavesFolders) {
    const std::wstring given = platform::toWide(file);
    if (!platform::isAbsolutePath(given)) return {};
    std::wstring path = absolutePath(given);
    const std::size_t root = files::rootLength(path);
    if (path.size() == root) return {};
    for (std::size_t i = 0; i <= leavesFolders && path.size() > root; ++i)
        path.resize((std::max)(path.find_last_of(LR"(\/)"), root));
    std::string folder = slashed(path);
    if (folder.back() != '/') folder += '/';
    return folder;
}

// "//server/share/" of a path there, else empty.
std::string shareOf(const std::string& path) {
    if (path.compare(0, 2, "//") != 0) return {};
    const std::size_t share = path.find('/', 2);
    const std::size_t end = share == std::string::npos ? share : path.find('/', share + 1);
    return end == std::string::npos ? std::string() : path.substr(0, end + 1);
}

// GetFileAttributesW gives the attributes of a link itself, so that for a link the file behind it is tested.
bool isFile(const std::string& path) {
    const std::wstring apiPath = platform::toApiPath(path);
    const DWORD attributes = apiPath.empty() ? INVALID_FILE_ATTRIBUTES : ::GetFileAttributesW(apiPath.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return false;
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 || xoDirUtils::FileExistsUtf8(path);
}

// Passes the files that exist to a sink, each once, until the sink returns false.
class Matches {
public:
    using Sink = std::function<bool(Match&&)>;

    // The names of the reference, with "/" between them, must outlive the object.
    Matches(const std::string& names, Sink sink) : mNames(names), mSink(std::move(sink)) {}

    // Passes the path on if it is an existing file. False once the sink has returned false.
    bool add(std::string path, xoXRefResolverSearchPath::How how) {
        if (!isFile(path)) return true;
        const unsigned shared = sharedNames(path);
        return pass(std::move(path), how, shared);
    }
    bool add(const std::string& path, xoXRefResolverSearchPath::How how, unsigned shared) {
        return !isFile(path) || pass(path, how, shared);
    }

    unsigned sharedNames(const std::string& path) const { return xref::countSharedNames(mNames, path); }

private:
    bool pass(std::string path, xoXRefResolverSearchPath::How how, unsigned shared) {
        // By the key, since several rules may lead to one file in different spellings.
        if (!mKeys.insert(xref::nameKey(path)).second) return true;
        return mSink({std::move(path), how, shared});
    }

    const std::string& mNames;
    const Sink mSink;
    std::set<std::string> mKeys;  // of the paths that were passed on
};

}  // namespace

struct xoXRefResolverSearchPath::Private {
    mutable platform::SlimLock lock;
    std::shared_ptr<const xref::IndexSettings> settings XO_GUARDED_BY(lock);  // never null, replaced when they change
    bool allowsNetwork XO_GUARDED_BY(lock) = false;
    mutable std::shared_ptr<const FileIndex> index XO_GUARDED_BY(lock);  // null until the first one is made

    // Held while an index is made, so that one thread makes it and others wait for the result. It is taken before the
    // other lock, never by a thread that holds that one.
    mutable platform::SlimLock building;

    struct Snapshot {
        std::shared_ptr<const xref::IndexSettings> settings;
        bool allowsNetwork;
    };
    Snapshot snapshot() const;
    template <class Change>
    void change(Change change);
    std::shared_ptr<const FileIndex> lastIndex() const;
    std::shared_ptr<const FileIndex> upToDateIndex() const;
    FileIndex::Built build(const std::atomic<bool>* cancel) const XO_REQUIRES(building);

    void search(const std::string& text, const std::string& document, Matches::Sink sink) const;
    void searchByName(const Reference& reference, Matches& matches) const;
};

// ---- the index

xoXRefResolverSearchPath::Private::Snapshot xoXRefResolverSearchPath::Private::snapshot() const {
    const platform::SlimLocker locker(lock);
    return {settings, allowsNetwork};
}

// Replaces the settings, unless there was nothing to change. Readers keep those that they have.
template <class Change>
void xoXRefResolverSearchPath::Private::change(Change change) {
    const platform::SlimLocker locker(lock);
    auto changed = std::make_shared<xref::IndexSettings>(*settings);
    if (!change(*changed)) return;
    // An index of an older generation is made again at the next search by name.
    ++changed->generation;
    settings = std::move(changed);
}

// The pointer is copied under the lock: the index lives as long as a reader has it, even when another one replaces it.
std::shared_ptr<const FileIndex> xoXRefResolverSearchPath::Private::lastIndex() const {
    const platform::SlimLocker locker(lock);
    return index;
}

FileIndex::Built xoXRefResolverSearchPath::Private::build(const std::atomic<bool>* cancel) const {
    const platform::QuietErrors quiet;  // a search path may lie on a drive without a medium
    // The walk may take minutes. It does not hold the lock of the settings, so that other threads use the last index
    // meanwhile.
    FileIndex::Built built = FileIndex::build(*snapshot().settings, cancel);
    if (!built.index) return built;
    std::shared_ptr<const FileIndex> swapped = built.index;
    {
        const platform::SlimLocker locker(lock);
        index.swap(swapped);
    }
    return built;  // the old index is freed here, without the lock
}

// Makes the index if it is not that of the present settings, or waits while another thread does.
std::shared_ptr<const FileIndex> xoXRefResolverSearchPath::Private::upToDateIndex() const {
    const auto present = [this]() -> std::shared_ptr<const FileIndex> {
        const platform::SlimLocker locker(lock);
        return index && index->generation() == settings->generation ? index : nullptr;
    };
    if (auto found = present()) return found;
    FileIndex::Built built;
    {
        const platform::SlimLocker builder(building);
        if (auto found = present()) return found;  // another thread has made it meanwhile
        built = build(/*cancel=*/nullptr);
    }
    built.log();
    return built.index;  // not null, since nothing cancels it
}

xoXRefResolverSearchPath::xoXRefResolverSearchPath(std::size_t maxFiles) : mPrivate(new Private) {
    const platform::SlimLocker locker(mPrivate->lock);
    auto settings = std::make_shared<xref::IndexSettings>();
    settings->maxFiles = maxFiles;
    mPrivate->settings = std::move(settings);
}

xoXRefResolverSearchPath::~xoXRefResolverSearchPath() = default;

void xoXRefResolverSearchPath::addSearchPathUtf8(const std::string& folder, bool recursive) {
    const std::string path =
        slashed(absolutePath(platform::toWide(folder)));  // now, because the working folder may change before the walk
    if (path.empty()) return;
    const std::string key = xref::nameKey(path);
    mPrivate->change([&](xref::IndexSettings& settings) {
        auto& paths = settings.searchPaths;
        const bool isThere = std::any_of(paths.begin(), paths.end(), [&](const auto& each) { return each.key == key; });
        if (!isThere) paths.push_back({path, recursive, key});
        return !isThere;
    });
}

void xoXRefResolverSearchPath::clearSearchPaths() {
    mPrivate->change([](xref::IndexSettings& settings) {
        settings.searchPaths.clear();
        return true;
    });
}

std::vector<std::string> xoXRefResolverSearchPath::getSearchPaths() const {
    std::vector<std::string> folders;
    const auto settings = mPrivate->snapshot().settings;
    for (const auto& path : settings->searchPaths) folders.push_back(path.folder);
    return folders;
}

void xoXRefResolverSearchPath::setExtensions(const std::vector<std::string>& extensions) {
    std::vector<std::string> keys;
    for (const std::string& extension : extensions)
        if (!extension.empty()) keys.push_back(xref::nameKey(extension[0] == '.' ? extension : '.' + extension));
    mPrivate->change([&](xref::IndexSettings& settings) {
        settings.extensionKeys = keys;
        return true;
    });
}

void xoXRefResolverSearchPath::setNetworkReferences(bool allowed) {
    const platform::SlimLocker locker(mPrivate->lock);
    mPrivate->allowsNetwork = allowed;  // does not affect the index, so its generation stays
}

bool xoXRefResolverSearchPath::refresh(const std::atomic<bool>* cancel) {
    FileIndex::Built built;
    {
        const platform::SlimLocker builder(mPrivate->building);
        built = mPrivate->build(cancel);
    }
    built.log();
    return built.index && built.index->isComplete();
}

std::size_t xoXRefResolverSearchPath::getFileCount() const {
    const auto index = mPrivate->lastIndex();
    return index ? index->fileCount() : 0;
}

bool xoXRefResolverSearchPath::isComplete() const {
    const auto index = mPrivate->lastIndex();
    return index && index->isComplete();
}

// ---- the rules

void xoXRefResolverSearchPath::Private::search(const std::string& text, const std::string& document,
                                               Matches::Sink sink) const {
    const Reference reference = xref::readReference(text);
    if (reference.kind == Reference::Kind::Nowhere) return;
    const platform::QuietErrors quiet;  // the reference may name a drive without a medium
    const std::string names = xref::joinNames(reference.names);
    const Snapshot now = snapshot();
    const auto& paths = now.settings->searchPaths;
    Matches matches(names, std::move(sink));

    // Whether asking for the path may reach a computer that only the reference knows.
    const auto mayAsk = [&](const std::string& path) {
        if (reference.kind != Reference::Kind::Share || now.allowsNetwork) return true;
        const std::string key = xref::nameKey(path);
        const std::string share = xref::nameKey(shareOf(folderOf(document, 0)));
        if (!share.empty() && key.compare(0, share.size(), share) == 0) return true;
        return std::any_of(paths.begin(), paths.end(), [&](const auto& each) { return xref::isBelow(key, each.key); });
    };
    // The rules in the order of the enumeration How.
    if (const std::string path = reference.root + names;
        !reference.root.empty() && mayAsk(path) && !matches.add(path, FoundAsWritten))
        return;
    if (reference.kind == Reference::Kind::Relative) {
        const std::string folder = folderOf(document, reference.leavesFolders);
        if (!folder.empty() && !matches.add(folder + names, FoundBesideDocument)) return;
    }
    for (const auto& path : paths) {
        const char* const separator = path.folder.back() == '/' ? "" : "/";
        if (!matches.add(path.folder + separator + names, FoundBelowSearchPath)) return;
    }
    searchByName(reference, matches);
}

// The candidates are sorted completely, so that the result does not depend on the order of the walk.
void xoXRefResolverSearchPath::Private::searchByName(const Reference& reference, Matches& matches) const {
    struct Candidate {
        FileIndex::Found file;
        unsigned sharedNames;
        std::string key;

        // sharedNames is on the other side than the rest: more come first.
        bool operator<(const Candidate& other) const {
            return std::tie(other.sharedNames, file.searchPath, file.depth, key, file.path) <
                   std::tie(sharedNames, other.file.searchPath, other.file.depth, other.key, other.file.path);
        }
    };
    // The best candidate shares the most names with the reference; then come the order of the search paths, the depth,
    // and the paths themselves.
    std::vector<Candidate> candidates;
    for (FileIndex::Found& found : upToDateIndex()->find(xref::nameKey(reference.names.back()))) {
        const unsigned shared = matches.sharedNames(found.path);
        std::string key = xref::nameKey(found.path);
        candidates.push_back({std::move(found), shared, std::move(key)});
    }
    std::sort(candidates.begin(), candidates.end());
    for (const Candidate& candidate : candidates)
        if (!matches.add(candidate.file.path, FoundByName, candidate.sharedNames)) return;
}

std::string xoXRefResolverSearchPath::resolveUtf8(const std::string& reference, const std::string& document) const {
    std::string best;
    mPrivate->search(reference, document, [&](Match&& match) {
        best = std::move(match.path);
        return false;
    });
    return best;
}

std::vector<Match> xoXRefResolverSearchPath::findAllUtf8(const std::string& reference,
                                                         const std::string& document) const {
    std::vector<Match> all;
    mPrivate->search(reference, document, [&](Match&& match) {
        all.push_back(std::move(match));
        return true;
    });
    return all;
}

}  // namespace xo
