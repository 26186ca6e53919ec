// xoXRefResolverSearchPath: finds the files that a document refers to by the names that they had on another machine.
//
//     xo::xoXRefResolverSearchPath resolver;
//     resolver.addSearchPathUtf8(projectFolder);
//     const std::string texture = resolver.resolveUtf8("D:\\old project\\textures\\Oak.PNG", documentPath);
//     if (texture.empty()) return missing();
//
// A reference is looked for in this order: as it is written, beside the document, below each search path, and by its
// name alone among all files of the search paths. Names are compared as the file system does: without case, composed
// and decomposed letters alike. Both separators part names, "file:" URLs are decoded, blanks around a reference are
// dropped.
//
// A reference may come from a foreign document, so that some are found nowhere and never tried: an empty one, one that
// is not UTF-8, one that ends in a separator, a device ("\\.\...", "NUL", "COM1.txt"), an alternate stream ("a.png:b"),
// and one with a control character or one of <>"|?* in it. A reference to another computer ("\\server\share\...") is
// tried only if it lies below a search path, on the share of the document, or if setNetworkReferences allows it: asking
// an unknown server may take a minute and sends it the user's log-on.
//
// Everything may be called from any thread. Look-ups run side by side, also during a refresh. Nothing fails, short of
// memory running out: what is not found is an empty text or list.
#ifndef XOSYSTEM_XOXREFRESOLVERSEARCHPATH_H
#define XOSYSTEM_XOXREFRESOLVERSEARCHPATH_H

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

template <class E>
class xoEnumList;

class XOSYSTEM_API xoXRefResolverSearchPath {
public:
    // The rule by which a file was found.
    enum How : int {
        FoundAsWritten = 0,        // at the absolute path of the reference
        FoundBesideDocument = 1,   // at the relative path, from the document's folder
        FoundBelowSearchPath = 2,  // at its path without drive, share and leading "..", from a search path
        FoundByName = 3,           // a file of that name, in the index
    };

    // A file that existed when it was found.
    struct Match {
        std::string path;          // absolute, with "/"
        How how = FoundAsWritten;  // the rule
        // How many names of the reference and of the path are equal, counted from the end. 1 says that only the file's
        // own name is; two first matches with equal how and sharedNames are equally good.
        unsigned sharedNames = 0;
    };

    // Of the files in the index.
    static constexpr std::size_t kDefaultMaxFiles = 200000;

    // maxFiles limits the files in the index.
    explicit xoXRefResolverSearchPath(std::size_t maxFiles = kDefaultMaxFiles);
    ~xoXRefResolverSearchPath();
    xoXRefResolverSearchPath(const xoXRefResolverSearchPath&) = delete;
    xoXRefResolverSearchPath& operator=(const xoXRefResolverSearchPath&) = delete;

    // The folder is made absolute here; it may be missing. A folder that was added before is not added again. With
    // recursive the index holds all files below it, otherwise those in it.
    void addSearchPathUtf8(const std::string& folder, bool recursive = true);
    void clearSearchPaths();
    // Absolute, with "/", in the order of adding.
    std::vector<std::string> getSearchPaths() const;
    // Which files the index holds, "png" or ".png", in any case; all files without any extension.
    void setExtensions(const std::vector<std::string>& extensions);
    // Whether references to other computers are tried wherever they lead. At first they are not.
    void setNetworkReferences(bool allowed);

    // Makes the index of the search paths' files anew. True if it holds all of them. Setting *cancel, which is looked
    // at for each folder, leaves the old index and gives false. Without this call the first look-up by name makes the
    // index, and so does the first one after search paths or extensions have changed.
    //
    // Where the index has the most files that it may hold, the walk ends with the WARNING line
    // "xoXRefResolverSearchPath too many files (more than <limit>)"; what it holds then is used. A search path that
    // cannot be listed counts as empty, with a DEBUG line (qualifier "XRefResolver").
    bool refresh(const std::atomic<bool>* cancel = nullptr);

    // The best match, or an empty text. The document is the absolute path of the file that holds the reference; without
    // one the second rule finds nothing.
    std::string resolveUtf8(const std::string& reference, const std::string& document = {}) const;
    // All matches, the best first, each file once. Files found by name are ordered by the number of names they share
    // with the reference, by search path, by the number of folders below it, and then by their path.
    std::vector<Match> findAllUtf8(const std::string& reference, const std::string& document = {}) const;

    // Of the last index that was made: the files in it, and whether these are all.
    std::size_t getFileCount() const;
    bool isComplete() const;

private:
    struct Private;

    std::unique_ptr<Private> mPrivate;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoXRefResolverSearchPath::How> xoEnumEntries(xoXRefResolverSearchPath::How);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
