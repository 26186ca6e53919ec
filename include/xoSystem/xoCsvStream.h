// Writing delimited text: xoCsvStream writes cells to any byte device, xoCsvFileWriter to a sequence of files.
//
//     xo::xoCsvFileWriter writer(folder, "parcels", 100000);
//     bool ok = true;
//     for (const Parcel& parcel : parcels) {
//         xo::xoCsvStream& stream = writer.getStream();
//         stream << parcel.name << parcel.grams << xo::xoCsvStream::EndOfRow();
//         ok = ok && stream.isOk();
//     }
//
// A cell that holds the separator or the quote character is written between two quote characters, and those in it are
// doubled. Nothing else makes it quoted. The line end is written before the first cell of the next row, so that there
// is none after the last row.
//
// xoCsvFileReader, with the same separator and quote character, reads back what was written, except:
//
// - A line feed in a cell that is not quoted for another reason ends the row, and a carriage return is dropped. Replace
//   them, or have a separator in such cells.
// - A last row that ends with an empty cell loses that cell, and a last row of one empty cell is lost. Let the last
//   cell of a row never be empty, or write a last row that the reader of the file ignores. Rows without any cell are
//   not written at all.
// - The byte-order mark becomes part of the first cell. Remove its first three bytes, or write no mark.
// - The text must be UTF-8, and a cell of the first row of a file at most 65535 bytes long.
// - The separator and the quote character must be two different ASCII characters, neither of them a line feed or a
//   carriage return, and the end of line "\n" or "\r\n".
// - A char is written as its number, a real with three significant digits. A reader that guesses types reads the text
//   "010" as a number; without the guess every cell is the text that was written.
//
// Nothing throws, except the program's own device, and constructing and copying without memory. An error clears the
// stream's ok flag, and then nothing more is written. Objects are used by one thread at a time.
#ifndef XOSYSTEM_XOCSVSTREAM_H
#define XOSYSTEM_XOCSVSTREAM_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

class xoIoDevice;

// Copies write to the same device, each with its own row and column. The state stays in the class: a stream is often a
// temporary, and every cell uses most of it.
class XOSYSTEM_API xoCsvStream {
public:
    // Streamed, it ends the row, also when the stream is not ok. Nothing is written.
    struct EndOfRow {};

    // The device is not owned. With null, the first cell or end of a row clears the ok flag.
    explicit xoCsvStream(xoIoDevice* device, char separator = ',', char quote = '"',
                         const std::string& endOfLine = "\n");

    // Continues with another device, or none, as a new stream does: the first row and column, and ok.
    void setDevice(xoIoDevice* device);

    // Write one cell: a separator or line end, if one is due, and then the text, with a call of writeBytes for each. An
    // empty text is a cell, a null pointer is none. The bytes of a text are written without conversion. A cell that has
    // to be quoted and does not fit into memory is an error.
    xoCsvStream& operator<<(bool value);  // "true" or "false"
    xoCsvStream& operator<<(char value);  // its number, from -128 on
    xoCsvStream& operator<<(unsigned char value);
    xoCsvStream& operator<<(short value);
    xoCsvStream& operator<<(unsigned short value);
    xoCsvStream& operator<<(int value);
    xoCsvStream& operator<<(unsigned int value);
    xoCsvStream& operator<<(long value) { return *this << static_cast<std::int64_t>(value); }
    xoCsvStream& operator<<(unsigned long value) { return *this << static_cast<std::uint64_t>(value); }
    xoCsvStream& operator<<(std::int64_t value);
    xoCsvStream& operator<<(std::uint64_t value);
    xoCsvStream& operator<<(float value);  // "0.333", "1.23e+03"
    xoCsvStream& operator<<(double value);
    xoCsvStream& operator<<(const std::string& text);
    xoCsvStream& operator<<(const char* text);
    template <class T>
    xoCsvStream& operator<<(const T* pointer) = delete;  // it would be written as a bool
    xoCsvStream& operator<<(EndOfRow);

    // The row and the column of the next cell. Cells that failed count, cells after an error do not. Both indexes stay
    // at 4294967295 when they have reached it.
    unsigned int getNextCellRowIndex() const { return mRowIndex; }
    unsigned int getNextCellColIndex() const { return mColumnIndex; }

    // False after the first error since setDevice. setError() makes it false.
    bool isOk() const { return mOk; }
    void setError() { mOk = false; }

private:
    void writeCell(const char* data, std::size_t size);
    void writeCell(const std::string& text) { writeCell(text.data(), text.size()); }
    template <class Integer>
    xoCsvStream& writeInteger(Integer value);
    void write(const char* data, std::size_t size);
    bool isMarked(const char* data, std::size_t size) const;
    void escape(const char* data, std::size_t size);

    std::vector<char> mEscaped;  // the text of a quoted cell; its memory is used again
    std::string mEndOfLine;
    xoIoDevice* mDevice;
    unsigned int mRowIndex = 0;
    unsigned int mColumnIndex = 0;
    char mSeparator;
    char mQuote;
    bool mOk = true;
};

// Writes to "<name>.csv" in the folder, then to "<name> (1).csv", "<name> (2).csv" and so on, each of at most a given
// number of rows. Existing files are replaced. A file is buffered: what was written is in it when it is closed, which
// the next file and the destructor do. It is an xoIoDeviceFile that others may read and write meanwhile.
class XOSYSTEM_API xoCsvFileWriter {
public:
    // The folder must exist; an empty one is the root of the current drive, "." the working folder. It is made absolute
    // here, so that all files are in one folder when the working folder changes. The name has no extension, and may
    // begin with a folder below. Both are UTF-8, and each broken sequence becomes U+FFFD. A limit of 0 counts as 1. The
    // byte-order mark is EF BB BF.
    xoCsvFileWriter(const std::string& folder, const std::string& baseName, unsigned int maxRowsPerFile,
                    char separator = ',', char quote = '"', const std::string& endOfLine = "\n",
                    bool writeByteOrderMark = false);
    ~xoCsvFileWriter();

    // A copy has the settings and the number of the next file, but no open file. So a writer and its copy replace each
    // other's files: use one of them. Assigning closes the file of the writer assigned to.
    xoCsvFileWriter(const xoCsvFileWriter& other);
    xoCsvFileWriter& operator=(const xoCsvFileWriter& other);

    // The stream for the next cell, the same object each time. Call it for each cell, or at least for each row: it
    // begins the next file when the present one has its rows, with a stream that is ok again. It creates that file even
    // if no cell follows, so check the stream that was written to, and not the result of a new call.
    //
    // A file that cannot be created (the existing one is read-only, say) writes a CRITICAL line to the log, and the
    // first byte written to its stream clears the ok flag; the next call tries the next name. When a file cannot be
    // written to its end, a CRITICAL line is logged, and unless that shows only at closing the ok flag is cleared.
    xoCsvStream& getStream();

private:
    struct Private;

    void openNextFile();
    void finalizeCurrentFile();

    std::unique_ptr<Private> mPrivate;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
