// The files of the search paths, to be found by name. An index never changes once it is made, so threads share it
// without a lock.
#ifndef XO_XREF_FILEINDEX_H
#define XO_XREF_FILEINDEX_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace xo::xref {

struct SearchPath {
    std::string folder;  // absolute, with "/", without one at its end unless it is a root
    bool isRecursive;
    std::string key;  // of the folder
};

struct IndexSettings {
    std::vector<SearchPath> searchPaths;
    std::vector<std::string> extensionKeys;  // each with a "." in front; none for all files
    std::size_t maxFiles = 0;
    std::uint64_t generation = 0;  // changes with each change of the others
};

// A hash table with chaining: mHeads has the first entry of each chain. The keys of the names are not stored, only
// their hashes.
class FileIndex {
public:
    struct Built {
        std::shared_ptr<const FileIndex> index;  // null when the walk was cancelled
        std::vector<std::string> missing;        // the search paths that could not be listed
        std::size_t maxFiles = 0;

        // Writes the lines about the walk. Not for use under a lock, because a handler of the log may use the resolver.
        void log() const;
    };
    // Walks the search paths.
    static Built build(const IndexSettings& settings, const std::atomic<bool>* cancel);

    std::uint64_t generation() const { return mGeneration; }
    std::size_t fileCount() const { return mEntries.size(); }
    bool isComplete() const { return mIsComplete; }  // false if a limit was reached

    struct Found {
        std::string path;
        unsigned searchPath;  // its number
        unsigned depth;       // how many folders below the search path
    };
    // The files whose name has the key, in no particular order.
    std::vector<Found> find(std::string_view nameKey) const;

private:
    class Builder;

    struct Folder {
        std::string path;
        unsigned searchPath;
        unsigned depth;
    };
    // 16 bytes a file, beside its name and its share of the heads.
    struct Entry {
        std::uint32_t folder;
        std::uint32_t name;  // where it begins in mNames; a NUL ends it
        std::uint32_t hash;  // of its key
        std::uint32_t next;  // the next entry of the chain, kNone at the end
    };
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    // Makes the chains from the entries.
    void link();

    std::vector<Folder> mFolders;
    std::vector<Entry> mEntries;
    std::string mNames;
    std::vector<std::uint32_t> mHeads;  // by the low bits of the hash; their number is a power of two
    std::uint64_t mGeneration = 0;
    bool mIsComplete = true;
};

}  // namespace xo::xref

#endif
