// xoDirUtils: paths, folders and files by UTF-8 name, and walks through whole trees of them.
//
//     std::string error;
//     if (!xoDirUtils::MkpathUtf8(folder) || !xoDirUtils::RenameFileUtf8(made, folder + "/report.csv", &error))
//         return show(error);
//
//     std::vector<std::string> reports;
//     const std::vector<std::string> extensions = {"csv", "txt"};
//     xoDirUtils::GlobFileAndFolderUtf8(folder, &reports, nullptr, &extensions, xoDirUtils::GlobRecursive);
//
// Every path is UTF-8, with "/" or "\" between its names, absolute or relative to the working directory. Paths beyond
// 260 characters work wherever the operating system takes them. A path with a NUL inside names no file: it is never
// found and never made. The same holds for an empty path, unless a function says otherwise. What is not valid UTF-8 in
// a path counts as U+FFFD, the replacement character; in results, U+FFFD stands for what is not valid UTF-16 on the
// disk. A drive without a separator, "D:", is the current folder of that drive, but its root in visit, ClearFolderUtf8
// and CopyFolderUtf8.
//
// All functions may be called from any thread; the working directory is one for the whole process.
//
// Nothing throws except std::bad_alloc; what a visitor's own operations throw passes through. A failure gives false, an
// empty text or 0. A std::string* that is not null then receives the reason; success leaves it as it was.
#ifndef XOSYSTEM_XODIRUTILS_H
#define XOSYSTEM_XODIRUTILS_H

#include <cstdint>
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
class xoProgressNotifier;

// What GetFileInfoUtf8 finds out about one file or folder.
struct XOSYSTEM_API xoFileInfoUtf8 {
    xoFileInfoUtf8() { clearInfos(); }

    // Empties the path and zeroes the rest.
    void clearInfos();

    // Whether every field is equal; the paths are compared byte for byte.
    bool operator==(const xoFileInfoUtf8& other) const;
    bool operator!=(const xoFileInfoUtf8& other) const { return !(*this == other); }

    std::string path;               // as it was asked for
    std::int64_t accessTime;        // seconds since 1970-01-01 UTC, as the next two
    std::int64_t creationTime;      //
    std::int64_t modificationTime;  //
    std::uint64_t size;             // bytes; 0 for a folder
    bool exists : 1;                // links are followed
    bool hasType : 1;               // whether it is known to be a file, a folder or a device; set for all that exists
    bool isDirectory : 1;           // a folder, or a drive
};

class XOSYSTEM_API xoDirUtils {
public:
    xoDirUtils() = delete;

    // ---- working directory and program ----

    // Windows takes no working directory beyond 258 characters, unless the program declares itself aware of long paths.
    static bool SetCurrentWorkingDirUtf8(const std::string& path);
    // With backslashes. Empty if the system refuses.
    static std::string GetCurrentWorkingDirUtf8();

    // The folder of the running executable, with backslashes and no separator at the end except after a bare drive.
    // On failure the argument stays as it is.
    static bool GetFolderOfCurrentProcessUtf8(std::string& folder);

    // ---- paths as text ----

    // With backslashes, "." and ".." resolved, and a separator at the end if there was one. The path need not exist.
    // Empty for an empty path and for one with a NUL inside.
    static std::string GetAbsolutePathUtf8(const std::string& path);

    // As PathIsRelativeW sees it: what begins with a backslash or a drive is not relative; what begins with "/" is, and
    // so is an empty path.
    static bool IsPathRelativeUtf8(const std::string& path);

    // The path without its last name, with "/" between the others: "C:\a\b\c.txt" gives "C:/a/b". One separator at the
    // end does not count: "C:/a/b/" gives "C:/a". Empty for a single name.
    static std::string GetParentPathUtf8(const std::string& path);

    // The path with each name in the case in which the disk holds it, short 8.3 names in their long form, and an
    // upper-case drive letter. Separators and "." and ".." stay as given, and so does all from the first name that does
    // not exist, among them names with a wildcard. A path with a NUL inside comes back as it is.
    static std::string GetActualPathNameUtf8(const std::string& path);

    // ---- known folders, without a separator at the end; empty when the system has none ----

    static std::string GetFontFolderUtf8();           // of the system
    static std::string GetCommonAppDataFolderUtf8();  // for all users
    static std::string GetAppDataFolderUtf8();        // of this user, roaming
    static std::string GetPicturesFolderUtf8();       // of this user
    static std::string GetDocumentsFolderUtf8();      // of this user

    // What TEMP holds, else the system's answer, with "/" between the names. A separator at the end is dropped, except
    // after a bare drive.
    static std::string GetTempFolderUtf8();

    // The path of a file that does not exist, in a folder that must exist and be writable; an empty folder stands for
    // GetTempFolderUtf8(). The name is made of the first three characters of the prefix, a number in hexadecimal and
    // ".tmp", or the extension given (with or without its point; an empty one leaves the name without any). The path
    // has backslashes. It is empty on failure, and for a prefix or extension that could not stand in a file name.
    //
    // Only the name is returned, no file is left behind: within this process no number comes twice before all 65535
    // have, whatever thread asks, but another process may take the name before the caller does.
    static std::string GetTempFileUtf8(const std::string& folder, const std::string& prefix);
    static std::string GetTempFileUtf8(const std::string& folder, const std::string& prefix,
                                       const std::string& extension);

    // ---- existence and information ----

    // Files, folders and devices all count. Links are followed: one that leads nowhere does not exist. A file that
    // another program holds open exists, however it is held. A separator at the end is taken for a folder, not for a
    // file.
    static bool FileExistsUtf8(const std::string& path);

    // Folders, drives and links to folders. Links are not followed.
    static bool DirExistsUtf8(const std::string& path);

    // Fills info anew. What FileExistsUtf8 denies leaves all but the path cleared. A file system without access or
    // creation times gives the modification time for them.
    static void GetFileInfoUtf8(const std::string& path, xoFileInfoUtf8& info);

    // The bytes that the caller may still write to the volume of a path. Of a path that is no folder, or not one yet,
    // the nearest folder above it counts, unless access to the path is denied or the volume fails; of a network path
    // its share. The error is emptied on success, and holds "GetDiskFreeSpaceExW error " and the code on failure, so
    // that a full volume and a failure differ. An empty path is a failure.
    static std::uint64_t GetAvailableDiskSizeUtf8(const std::string& path, std::string& error);

    // ---- changing files and folders ----

    // Renames or moves, to another volume too (files only), and replaces a file that is there.
    // Error: "MoveFileExW error " and the code.
    static bool RenameFileUtf8(const std::string& from, const std::string& to, std::string* error = nullptr);

    // failIfExists as in CopyFileW: with true, the default, an existing file is never touched; with false it is
    // replaced, unless it is read-only or hidden.
    static bool CopyFileUtf8(const std::string& from, const std::string& to, bool failIfExists = true);

    // The same with a notifier, which may be null and counts bytes. Error: "CopyFileExW error " and the code, or
    // "Canceled"; then the target is deleted, also a file that was to be replaced.
    static bool CopyFileUtf8(const std::string& from, const std::string& to, bool failIfExists, std::string* error,
                             xoProgressNotifier* progress);

    // Copies a folder and all below it, of any depth, into the folder `to`. That folder and those above it are made
    // where they are missing; in a folder that is there, what has other names stays. With failIfExists no existing
    // file is touched, which counts as a failure; otherwise it is replaced, also a read-only or hidden one.
    //
    // A link, to a file or a folder, is copied as a link and not followed; only the folder given may be a link to the
    // one that is meant. Files, and folders that are made, get the times and attributes of their source as far as the
    // file system has them, and the permissions of the folder they are made in. If `to` lies inside of `from`, it is
    // left out of the copy. Where the paths do not show it, for instance over a share, the copy reports the folder as a
    // failure. A folder is not copied to itself.
    //
    // A failure does not keep the rest from being copied. The result is false then, and the error has a line for each
    // of the first 100 failures and, if there are more, their number: "CopyFileExW error ", "CreateDirectoryW error ",
    // "FindFirstFileW error " (the folder cannot be listed) or "DeviceIoControl error " (a link to a folder), the code,
    // " for " and the path.
    //
    // The notifier may be null; otherwise the tree is walked twice, first for the sum of its sizes. Once it is
    // canceled, what has been copied stays but the file under way; the result is false and the error "Canceled".
    static bool CopyFolderUtf8(const std::string& from, const std::string& to, bool failIfExists = true,
                               std::string* error = nullptr, xoProgressNotifier* progress = nullptr);

    // A missing file, a read-only one and a folder all give false.
    static bool RemoveFileUtf8(const std::string& path);

    // Makes every folder of the path that is missing. True when the whole path then is a folder; a file in the way
    // gives false, and what was made before it stays. An empty path stands for the working directory.
    static bool MkpathUtf8(const std::string& path);

    // Deletes all that a folder holds, read-only files and whole trees of any depth included, and with
    // removeFolderItself the emptied folder too. A link among what it holds is removed itself; what it leads to is
    // never touched. A file that has other names elsewhere keeps its attributes there. If the folder given is a link,
    // the folder behind it is cleared, but with removeFolderItself only the link goes.
    //
    // Files go before the folders beside them, a folder after what it held. A failed deletion does not keep the rest
    // from being deleted; the result is false and the error is that of the first failure: "FindFirstFileW error " and
    // the code (a missing folder, for one), "DeleteFileW error " with the code, " for " and the path, or
    // "RemoveDirectoryW error " and the code.
    //
    // Another thread may set *cancel at any time. It is looked at before each folder is read and before each entry is
    // deleted; once it is true nothing more is deleted, and the result is false with the error "Canceled".
    static bool ClearFolderUtf8(const std::string& folder, bool removeFolderItself = false,
                                std::string* error = nullptr, const bool* cancel = nullptr);

    // The same with a notifier, which may be null: each entry of a folder is a step. What it cancels ends as by
    // *cancel.
    static bool ClearFolderUtf8(const std::string& folder, bool removeFolderItself, std::string* error,
                                const bool* cancel, xoProgressNotifier* progress);

    // Gives everyone full access to one file or folder; what a folder holds keeps its own permissions. All permissions
    // that were set before are replaced.
    static bool GrantAllFilePermissionsUtf8(const std::string& path);

    // ---- walking a tree ----

    // Walks a folder and, if asked, all below it. Override the operations that matter; each goes on by returning true,
    // as those here do. A false result ends the walk at once, with no further operation.
    //
    //     class Sizes : public xoDirUtils::FileSystemVisitor {
    //         bool onFile(const std::string& folder, const std::string& file) override {
    //             xoDirUtils::GetFileInfoUtf8(concatPathAndFile(folder, file), mInfo);
    //             ...
    //
    // For each folder: onEnterFolder; then in the order of the system onFile for each file that passes and onFolder for
    // each sub-folder, which is walked right after it; then onLeaveFolder. Folders are walked whether or not they hold
    // files that pass. The folder is told as it was given to visit, with the names below joined by "/". The texts hold
    // until the operation returns. Where a name is no valid UTF-16, U+FFFD stands for what is broken.
    //
    // A folder that cannot be listed (missing, locked, a file) is passed over: none of its own operations is called,
    // and the walk goes on. Neither the depth of the tree nor the length of its paths is limited.
    //
    // A junction or symbolic link to a folder counts as a sub-folder. The folder that it leads to is walked too, under
    // the link's path, as often as links lead there. It is not walked if the walk is already inside it, or if the file
    // system does not tell whether it is. So a walk always comes to an end.
    //
    // A folder is listed as it is just before onEnterFolder: what an operation adds to it later is not reported, what
    // is deleted meanwhile still is. No folder given to an operation is kept from being renamed or deleted, except by
    // paths of more than 1000 characters, along which a few folders are held open for shared use.
    //
    // A visitor may be used again, for several walks at once too if its own operations allow that.
    class XOSYSTEM_API FileSystemVisitor {
    public:
        virtual ~FileSystemVisitor();

        // The operations. subFolder and file are names alone.
        virtual bool onEnterFolder(const std::string& folder);
        virtual bool onFile(const std::string& folder, const std::string& file);
        virtual bool onFolder(const std::string& folder, const std::string& subFolder);
        virtual bool onLeaveFolder(const std::string& folder);

        // False if an operation ended the walk, true otherwise; also when the folder does not exist, and then without
        // any operation. An empty folder stands for the root of the current drive.
        //
        // Without extensions, or with none in the list, every file passes. Otherwise the name must end in one of them,
        // byte for byte and with a "." before it: "jpg" and ".jpg" both let "a.jpg" pass, neither "a.JPG" nor "ajpg".
        // Empty ones let nothing pass.
        bool visit(const std::string& folder, bool recursive = true,
                   const std::vector<std::string>* extensions = nullptr);

        // The same with a notifier, which may be null: in each folder, each sub-folder is a step. Once it is canceled,
        // the walk ends as if an operation had ended it.
        bool visit(const std::string& folder, bool recursive, const std::vector<std::string>* extensions,
                   xoProgressNotifier* progress);

    protected:
        // "folder/file"; no "/" after an empty folder, or one that ends in a separator.
        static std::string concatPathAndFile(const std::string& folder, const std::string& file);
    };

    // How GlobFileAndFolderUtf8 collects.
    enum GlobFlag : int {
        GlobAppend = 1,     // to what the vectors hold; else they are emptied first
        GlobRecursive = 2,  // all below too
        GlobNamesOnly = 4,  // without the folder; else paths as concatPathAndFile makes them
    };

    // Collects the files that pass the extensions, and the sub-folders, in the order of a FileSystemVisitor's walk.
    // Either vector may be null, and the extensions may be one of the two. The flags are any sum of GlobFlag; other
    // bits are ignored.
    static void GlobFileAndFolderUtf8(const std::string& folder, std::vector<std::string>* files,
                                      std::vector<std::string>* folders = nullptr,
                                      const std::vector<std::string>* extensions = nullptr, int flags = 0);
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoDirUtils::GlobFlag> xoEnumEntries(xoDirUtils::GlobFlag);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
