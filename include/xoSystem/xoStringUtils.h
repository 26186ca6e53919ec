// xoStringUtils: edits, searches, splits, formats and compares narrow texts, and converts between character sets.
//
//     std::string line = "  name = 007 ";
//     xo::xoStringUtils::trim(line);                              // "name = 007"
//     auto parts = xo::xoStringUtils::Split(line, '=', false);    // "name ", " 007"
//     auto path = xo::xoStringUtils::convertToUnicode("été.txt", xo::xoStringUtils::CharSetUtf8);
//
// Narrow text is UTF-8 unless its name says otherwise; whatever works byte by byte (trimming, case, searching) knows
// the ASCII characters and passes every other byte through, so it never breaks a UTF-8 text. Nothing here depends on
// the user's locale except the native code page and the natural order.
//
// Any thread may call anything at any time; only InitializeStringUtils and TerminateStringUtils belong to the thread
// that starts and ends the library. Nothing throws, short of memory running out: bad input gets the result stated.
#ifndef XOSYSTEM_XOSTRINGUTILS_H
#define XOSYSTEM_XOSTRINGUTILS_H

#include <locale.h>  // _locale_t

#include <cstddef>
#include <cstdint>
#include <locale>
#include <string>
#include <vector>

#include "xoSystem/xoExport.h"

namespace xo {

template <class E>
class xoEnumList;

class XOSYSTEM_API xoStringUtils {
public:
    // What the bytes of a narrow text mean.
    enum xoCharSet : int {
        CharSetNative = 0,  // the process's ANSI code page
        CharSetUtf8 = 1,    // the library's own
        CharSetAscii = 2,   // what the classic locale converts: one byte a character
    };

    // Bits, so that several results can be asked for at once: (result & (Equal | Newer)) != 0.
    enum SoftwareVersionComparisonResult : int {
        SoftwareVersionInvalid = 1,  // a version cannot be read, or there is nothing to compare
        SoftwareVersionEqual = 2,    // as far as they are compared
        SoftwareVersionOlder = 4,    // the first version is smaller
        SoftwareVersionNewer = 8,    // the first version is greater
    };

    xoStringUtils() = delete;

    // ---- Locales. initializeXoSystem and terminateXoSystem call the first two.

    // Makes the two classic locales. False, with nothing changed, when they exist already.
    static bool InitializeStringUtils();
    // Frees them. False when they do not exist.
    static bool TerminateStringUtils();
    // Does nothing; kept for hosts that call it from their threads.
    static void InitializeForThread();
    // The "C" locale of the C runtime, for the functions that end in _l, and that of streams, to be imbued. Owned by
    // the library and null outside its lifetime.
    static _locale_t GetCLocale();
    static std::locale* GetCPlusLocale();

    // ---- Character sets.

    // A conversion takes the text up to its first NUL. When it fails it prints one line to std::cout and gives an empty
    // text; a text for the native code page or UTF-8 that needs more than two bytes a wide character fails. Broken
    // input becomes the replacement character of the system. An empty text converts silently, except with CharSetAscii,
    // where it fails like any other, and so does a narrow text that begins with a NUL. Before initialisation
    // CharSetAscii is the C runtime's current locale. A number that is no character set fails too.
    static std::wstring convertToUnicode(const std::string& text, xoCharSet from);
    static std::string convertTo8Bits(const std::wstring& text, xoCharSet to);
    // convertTo8Bits(convertToUnicode(text, from), to).
    static std::string convertCharset(const std::string& text, xoCharSet from, xoCharSet to);

    // The same for hosts that keep the set as a number.
    static std::wstring convertToUnicode(const std::string& text, int from) {
        return convertToUnicode(text, static_cast<xoCharSet>(from));
    }
    static std::string convertTo8Bits(const std::wstring& text, int to) {
        return convertTo8Bits(text, static_cast<xoCharSet>(to));
    }
    static std::string convertCharset(const std::string& text, int from, int to) {
        return convertCharset(text, static_cast<xoCharSet>(from), static_cast<xoCharSet>(to));
    }

    // Whether every sequence is complete, shortest and a valid code point. NULs are, and so is the empty text.
    static bool IsUtf8String(const std::string& text);
    // The number of code points; 0 for a text that is not UTF-8.
    static std::size_t CountUtf8Char(const std::string& text);
    // UTF-8 comes back unchanged. Any other text is taken for native and converted as convertCharset does: it ends at
    // the first NUL, bytes that the code page lacks become its default character, and a text that needs more than two
    // bytes a character comes back empty. Only where that gives no UTF-8 is every byte from 0x80 up replaced; the
    // replacement is put in as it is, so that one from 0x80 up gives no UTF-8 either.
    static std::string UnknownEncodingToUtf8(const std::string& text, char replacement = '?');

    // ---- Editing in place; each returns its argument.

    // White space is space, \t, \n, \v, \f and \r.
    static std::string& trim(std::string& text);
    static std::string& ltrim(std::string& text);
    static std::string& rtrim(std::string& text);
    // Trims, and turns each run of white space inside, be it a single tab, into one space.
    static std::string& trimAndRemoveConsecutiveSpaces(std::string& text);

    // Replaces every occurrence of from, left to right, never looking at what was put in. An empty from changes
    // nothing.
    static std::string& replace(std::string& text, const std::string& from, const std::string& to);
    static std::wstring& replace(std::wstring& text, const std::wstring& from, const std::wstring& to);
    // The same, and returns the number of replacements.
    static int ReplaceAllOccurences(std::string& text, const std::string& from, const std::string& to);

    // ASCII letters only.
    static std::string& toUpper(std::string& text);
    static std::string& toLower(std::string& text);

    // Empties the text after overwriting all the memory that it owns, so that a secret does not outlive it there.
    static void SecureClear(std::string& text);

    // ---- Tests and searches.

    // Byte by byte. Every text starts and ends with the empty one.
    static bool StartsWith(const std::string& text, const std::string& prefix);
    static bool endsWith(const std::string& text, const std::string& suffix);
    // The first position, or std::string::npos. An empty text is found at 0. Case means that of ASCII letters.
    static std::size_t FindCaseSensitive(const std::string& text, const std::string& what);
    static std::size_t FindCaseInsensitive(const std::string& text, const std::string& what);
    static bool Contains(const std::string& text, const std::string& what, bool caseSensitive = true);

    // True for "1", "true", "yes" and "on" in any case, with any white space around. False for all else and for null.
    static bool parseBool(const char* text);

    // ---- Splitting.

    // Replaces what out holds by the pieces between the separators, and returns out. It reads as a line reader does: a
    // separator at the very end opens no further piece, one at the start ends an empty piece, and an empty text has
    // none. skipEmpty leaves empty pieces out.
    static std::vector<std::string>& Split(const std::string& text, char sep, std::vector<std::string>& out,
                                           bool skipEmpty = false);
    static std::vector<std::string> Split(const std::string& text, char sep, bool skipEmpty = false);
    // The same in place: each separator is overwritten by the NUL that ends its piece, and out points into the text,
    // which ends at its first NUL. A null text has no pieces.
    static std::vector<char*>& Split(char* text, char sep, std::vector<char*>& out);
    // Cuts at the first separator only. Without one, first gets the whole text, second becomes empty, and the result is
    // false. Either may be the text itself.
    static bool SplitFirst(const std::string& text, char sep, std::string& first, std::string& second);

    // ---- Numbers as text, in the classic locale; all of them work before initialisation as well.

    // Decimal, padded on the left with "0" to width characters; a width of 1 or less pads nothing. The padding precedes
    // the sign: fromInt(-7, 3) is "0-7".
    static std::string fromInt(int value, int width = 1);
    static std::string fromUInt(unsigned value, int width = 1);
    static std::string fromInt64(std::int64_t value, int width = 1);
    static std::string fromUInt64(std::uint64_t value, int width = 1);

    // With precision significant digits, scientific where that is shorter: "0.1", "1.23e+03", "inf", "nan". A precision
    // of 0 counts as 1 and a negative one as 6, as in a stream.
    static std::string fromFloat(float value, int precision = 6);
    static std::string fromFloat(double value, int precision = 6);

    // For display: never scientific, rounded to digits places behind the decimal point. The exact value counts, a tie
    // goes to the even digit, and nothing rounds to "-0". Zeros at the end of the places go unless keepZeros is set; at
    // least integerDigits digits stand before the point. Infinity and NaN are "inf", "-inf" and "nan".
    static std::string roundNumber(double value, unsigned char digits, char decimalPoint = '.', bool keepZeros = false,
                                   unsigned char integerDigits = 1);

    // The fraction nearest to value whose denominator is from 1 to maxDenominator; of two equally near ones that with
    // the smaller denominator. The sign is the numerator's. Denominators beyond 10^15, or for which the numerator would
    // not fit, are not tried. False, and 0/1, for NaN, for a value that no 64-bit integer reaches and for a bound
    // below 1.
    static bool computeFractionnalRepresentation(double value, std::int64_t& numerator, std::int64_t& denominator,
                                                 std::int64_t maxDenominator = 1000000);

    // ---- Hexadecimal and UUIDs.

    // Sizes count the characters at data or text, which may lie in out; only with the size 0 may they be null. The
    // result replaces what out holds.

    // Two lower-case digits a byte.
    static void ToHex(const char* data, std::uint64_t size, std::string& out);
    // Takes digits of either case. False, and an empty out, for an odd size or any other character.
    static bool FromHex(const char* text, std::uint64_t size, std::string& out);

    // The 16 bytes in their order, as 8-4-4-4-12 lower-case digits, or as 32 digits without dashes. Neither here nor in
    // UUIDToBinary may uuid be null.
    static void UUIDToHex(const unsigned char* uuid, std::string& out, bool withDashes = true);
    // Takes both forms, in either case and with or without braces around. False leaves the 16 bytes at uuid alone.
    static bool UUIDToBinary(const std::string& text, unsigned char* uuid);
    // Whether UUIDToBinary would take it.
    static bool IsUUID(const std::string& text);

    // ---- Texts for a terminal, or for any other font in which each character has one or two columns.

    // The columns that the text takes: 2 for East Asian wide and full-width characters and for emoji, 0 for combining
    // marks, format characters and control characters, 1 for all others and for a byte that is not UTF-8. Sequences
    // count as one: an emoji with U+FE0F, with a skin tone or joined by U+200D is 2, and so are two regional
    // indicators, a digit with U+FE0F and U+20E3, and a Hangul syllable of several jamo. Terminals differ about such
    // sequences, and about what East Asian fonts show wide (counted 1 here). By the tables of Unicode 15.
    static std::size_t GetDisplayWidth(const std::string& text);
    // Makes visible what would move the cursor, start an escape sequence or change the order of the characters, in
    // place: line feed, carriage return and tab become "\n", "\r" and "\t"; other control characters (U+0000 to 001F,
    // 007F to 009F) and bytes that are not UTF-8 "\x1b"; the controls of writing direction (U+061C, 200E, 200F, 202A to
    // 202E, 2066 to 2069) and U+2028 and 2029 "\u202e". A backslash stays one, so the result cannot be read back.
    static std::string& MakePrintable(std::string& text);
    // Cuts a text that is wider at its end, or in its middle, where a path says least: what is left takes no more than
    // that many columns, together with the mark that stands for the rest. A mark that alone is wider is left out. What
    // GetDisplayWidth counts as one is never divided, so that the result may be a column narrower.
    static std::string& CutToDisplayWidth(std::string& text, std::size_t columns, const std::string& mark = "...",
                                          bool inMiddle = false);

    // ---- Paths as text. "/" and "\" both separate; the file system is never asked.

    // What stands before the last separator, without it; a root keeps it: "/", "C:\". Empty without a separator.
    static std::string ExtractFolder(const std::string& path);
    // The file name without its extension: "a.tar" of "x/a.tar.gz".
    static std::string ExtractFileBaseName(const std::string& path);
    // What follows the last dot of the file name, without the dot: "gz". A dot that the name starts with begins none.
    static std::string ExtractFileExtension(const std::string& path);
    // The folder as ExtractFolder gives it, and the name behind the last separator. Either may be the path itself.
    static void SplitFolderFilename(const std::string& path, std::string& folder, std::string& file);

    // Makes the text a name that Windows takes for a file, and returns it. Replaced are the control characters, any of
    // <>:"/\|?* and the dots and spaces at the end. A device name (CON, PRN, AUX, NUL, CONIN$, CONOUT$, COM or LPT with
    // one digit, whatever extension follows) gets the replacement behind it, and an empty text becomes it. A
    // replacement that may not itself end a name, or is not ASCII, counts as '_'. Nothing is shortened.
    static std::string& GenerateValidFileName(std::string& name, char replacement = '_');

    // ---- Natural order, by the user's locale: file2 before file10.

    // -1, 0 or 1; -2 when the comparison fails, as for a text beyond 2^31 - 1 wide characters. Broken UTF-8 compares as
    // U+FFFD. The sizes count wide characters; a null text with the size 0 is the empty text.
    static int CompareUTF8Natural(const std::string& a, const std::string& b, bool caseInsensitive = false);
    static int CompareUTF16Natural(const wchar_t* a, std::uint64_t sizeOfA, const wchar_t* b, std::uint64_t sizeOfB,
                                   bool caseInsensitive = false);

    // Whether a comes before b; for std::sort.
    static bool UTF8NaturalSortFunction(const std::string& a, const std::string& b);
    static bool UTF8NaturalSortFunctionCaseInsensitive(const std::string& a, const std::string& b);

    // ---- Software versions.

    // Numbers of up to 32 bits between dots, each as C reads it: "0x10" is 16, "010" is 8. White space around a number
    // is skipped and an empty place is 0. The length of b, cut to maxComponents, alone decides how much is compared:
    // "1.2.3" equals "1.2", and "1.2" equals "1.2.0".
    static SoftwareVersionComparisonResult compareSoftwareVersion(const std::string& a, const std::string& b,
                                                                  std::uint64_t maxComponents = UINT64_MAX);

private:
    static _locale_t msCLocale;
    static std::locale* msCplusLocale;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoStringUtils::xoCharSet> xoEnumEntries(xoStringUtils::xoCharSet);
XOSYSTEM_API xoEnumList<xoStringUtils::SoftwareVersionComparisonResult> xoEnumEntries(
    xoStringUtils::SoftwareVersionComparisonResult);

}  // namespace xo

#endif
