// xoStringUtils: edits, searches, splits, formats and compares narrow texts, and converts between character sets.
//
//     std::string line = "  name = 007 ";
//     xo::xoStringUtils::trim(line);                              // "name = 007"
//     auto parts = xo::xoStringUtils::Split(line, '=', false);    // "name ", " 007"
//     auto path = xo::xoStringUtils::convertToUnicode(nameInUtf8, xo::xoStringUtils::CharSetUtf8);
//
// Narrow text is UTF-8 unless a name says otherwise. Functions that work byte by byte (trimming, case, searching) treat
// ASCII characters only and leave all other bytes as they are, so they never break a UTF-8 sequence. Nothing here
// depends on the user's locale except the native code page and the natural order.
//
// All functions may be called from any thread at any time, except InitializeStringUtils and TerminateStringUtils, which
// belong to the thread that starts and ends the library. Nothing throws except std::bad_alloc. Each declaration states
// the result of bad input.
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
    // The encoding of a narrow text.
    enum xoCharSet : int {
        CharSetNative = 0,  // the process's ANSI code page
        CharSetUtf8 = 1,    // that of all other functions here
        CharSetAscii = 2,   // one byte a character, as the classic locale converts it
    };

    // Bit flags, so that one test may accept several results: (result & (Equal | Newer)) != 0.
    enum SoftwareVersionComparisonResult : int {
        SoftwareVersionInvalid = 1,  // a version cannot be read, or there is nothing to compare
        SoftwareVersionEqual = 2,    // in the numbers that are compared
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
    // The "C" locale of the C runtime, for the functions that end in _l, and the one to imbue streams with. Owned by
    // the library and null outside its lifetime.
    static _locale_t GetCLocale();
    static std::locale* GetCPlusLocale();

    // ---- Character sets.

    // A conversion reads the text up to its first NUL. If it fails, it prints one line to std::cout and returns an
    // empty text. It fails for a number that is no character set, and when the result in the native code page or UTF-8
    // needs more than two bytes for each wide character. Broken input becomes the replacement character of the system.
    // An empty text, or a narrow text that begins with a NUL, is converted without a message; only with CharSetAscii it
    // counts as a failure. Before initialisation CharSetAscii stands for the C runtime's current locale.
    static std::wstring convertToUnicode(const std::string& text, xoCharSet from);
    static std::string convertTo8Bits(const std::wstring& text, xoCharSet to);
    // convertTo8Bits(convertToUnicode(text, from), to).
    static std::string convertCharset(const std::string& text, xoCharSet from, xoCharSet to);

    // The same for hosts that store the character set as a number.
    static std::wstring convertToUnicode(const std::string& text, int from) {
        return convertToUnicode(text, static_cast<xoCharSet>(from));
    }
    static std::string convertTo8Bits(const std::wstring& text, int to) {
        return convertTo8Bits(text, static_cast<xoCharSet>(to));
    }
    static std::string convertCharset(const std::string& text, int from, int to) {
        return convertCharset(text, static_cast<xoCharSet>(from), static_cast<xoCharSet>(to));
    }

    // Whether the text is valid UTF-8: each sequence is complete, of the shortest form and a valid code point. NULs and
    // the empty text are valid.
    static bool IsUtf8String(const std::string& text);
    // The number of code points; 0 for a text that is not UTF-8.
    static std::size_t CountUtf8Char(const std::string& text);
    // Returns a UTF-8 text unchanged. Any other text is converted from the native code page as convertCharset does: it
    // ends at the first NUL, bytes that the code page lacks become its default character, and the result is empty if it
    // needs more than two bytes for each character. If the result is not UTF-8, each byte from 0x80 up of the text is
    // replaced instead. The replacement is not checked: one from 0x80 up makes a result that is not UTF-8.
    static std::string UnknownEncodingToUtf8(const std::string& text, char replacement = '?');

    // ---- Editing in place; each returns its argument.

    // White space is space, \t, \n, \v, \f and \r.
    static std::string& trim(std::string& text);
    static std::string& ltrim(std::string& text);
    static std::string& rtrim(std::string& text);
    // Trims the text and replaces each run of white space inside it, also a single tab, by one space.
    static std::string& trimAndRemoveConsecutiveSpaces(std::string& text);

    // Replaces every occurrence of from, from left to right. The inserted text is not searched again. An empty from
    // changes nothing.
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

    // Compare bytes. Every text starts with and ends with the empty text.
    static bool StartsWith(const std::string& text, const std::string& prefix);
    static bool endsWith(const std::string& text, const std::string& suffix);
    // The first position, or std::string::npos. An empty text is found at 0. Case means that of ASCII letters.
    static std::size_t FindCaseSensitive(const std::string& text, const std::string& what);
    static std::size_t FindCaseInsensitive(const std::string& text, const std::string& what);
    static bool Contains(const std::string& text, const std::string& what, bool caseSensitive = true);

    // True for "1", "true", "yes" and "on" in any case, with any white space around. False for all else and for null.
    static bool parseBool(const char* text);

    // ---- Splitting.

    // Replaces the content of out by the pieces between the separators, and returns out. As with std::getline, no empty
    // piece follows a separator at the end, a separator at the start follows an empty piece, and an empty text has no
    // pieces. skipEmpty omits empty pieces.
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

    // For display: never scientific, rounded to digits places behind the decimal point. The exact value is rounded, a
    // tie to the even digit, and a result of zero has no sign. Trailing zeros of the decimals are removed unless
    // keepZeros is set. At least integerDigits digits precede the point. Infinity and NaN are "inf", "-inf" and "nan".
    static std::string roundNumber(double value, unsigned char digits, char decimalPoint = '.', bool keepZeros = false,
                                   unsigned char integerDigits = 1);

    // The fraction nearest to value whose denominator is from 1 to maxDenominator; of two that are equally near, the
    // one with the smaller denominator. The sign is the numerator's. Denominators beyond 10^15, or for which the
    // numerator would not fit, are not tried. Returns false, and 0/1, for NaN, for a value outside the range of 64-bit
    // integers and for a bound below 1.
    static bool computeFractionnalRepresentation(double value, std::int64_t& numerator, std::int64_t& denominator,
                                                 std::int64_t maxDenominator = 1000000);

    // ---- Hexadecimal and UUIDs.

    // size is the number of characters at data or text, which may point into out, and may be null only if the size is
    // 0. The result replaces the content of out.

    // Two lower-case digits a byte.
    static void ToHex(const char* data, std::uint64_t size, std::string& out);
    // Accepts digits of either case. Returns false, with an empty out, for an odd size or any other character.
    static bool FromHex(const char* text, std::uint64_t size, std::string& out);

    // The 16 bytes in their order, as 8-4-4-4-12 lower-case digits, or as 32 digits without dashes. uuid must not be
    // null, here and in UUIDToBinary.
    static void UUIDToHex(const unsigned char* uuid, std::string& out, bool withDashes = true);
    // Accepts both forms, in either case, with or without braces. If it returns false, the 16 bytes at uuid are
    // unchanged.
    static bool UUIDToBinary(const std::string& text, unsigned char* uuid);
    // Whether UUIDToBinary accepts it.
    static bool IsUUID(const std::string& text);

    // ---- Texts for a terminal, or for any other font in which each character has one or two columns.

    // The columns that the text takes: 2 for East Asian wide and full-width characters and for emoji, 0 for combining
    // marks, format characters and control characters, 1 for all others and for a byte that is not UTF-8. Sequences
    // count as one: an emoji with U+FE0F, with a skin tone or joined by U+200D is 2, and so are two regional
    // indicators, a digit with U+FE0F and U+20E3, and a Hangul syllable of several jamo. Terminals differ about such
    // sequences, and about what East Asian fonts show wide (counted 1 here). The tables are those of Unicode 15.
    static std::size_t GetDisplayWidth(const std::string& text);
    // Makes visible what would move the cursor, start an escape sequence or change the order of the characters, in
    // place: line feed, carriage return and tab become "\n", "\r" and "\t"; other control characters (U+0000 to 001F,
    // 007F to 009F) and bytes that are not UTF-8 "\x1b"; the controls of writing direction (U+061C, 200E, 200F, 202A to
    // 202E, 2066 to 2069) and U+2028 and 2029 "\u202e". A backslash is not escaped, so the result cannot be converted
    // back.
    static std::string& MakePrintable(std::string& text);
    // Shortens a text that is wider than columns, at its end or, as is useful for paths, in its middle. The mark takes
    // the place of the removed part; the result with the mark has at most that many columns. A mark that is itself
    // wider is omitted. A sequence that GetDisplayWidth counts as one character is never divided, so the result may be
    // one column narrower.
    static std::string& CutToDisplayWidth(std::string& text, std::size_t columns, const std::string& mark = "...",
                                          bool inMiddle = false);

    // ---- Paths as text. "/" and "\" are both separators. The file system is not accessed.

    // The part before the last separator, without the separator, but with that of a root: "/", "C:\". Empty without a
    // separator.
    static std::string ExtractFolder(const std::string& path);
    // The file name without its extension: "a.tar" of "x/a.tar.gz".
    static std::string ExtractFileBaseName(const std::string& path);
    // The part of the file name behind its last dot: "gz". A dot at the start of the name does not begin an extension.
    static std::string ExtractFileExtension(const std::string& path);
    // The folder as ExtractFolder gives it, and the name behind the last separator. Either may be the path itself.
    static void SplitFolderFilename(const std::string& path, std::string& folder, std::string& file);

    // Turns the text into a valid file name of Windows, and returns it. Control characters, any of <>:"/\|?* and the
    // dots and spaces at the end are replaced. The replacement is inserted behind a device name (CON, PRN, AUX, NUL,
    // CONIN$, CONOUT$, COM or LPT with one digit, with any extension), and an empty text becomes the replacement. A
    // replacement that is not ASCII or must not end a name counts as '_'. The text is not shortened.
    // https://learn.microsoft.com/windows/win32/fileio/naming-a-file
    static std::string& GenerateValidFileName(std::string& name, char replacement = '_');

    // ---- Natural order, by the user's locale: file2 before file10.

    // Returns -1, 0 or 1, or -2 when the comparison fails, for example for a text of more than 2^31 - 1 wide
    // characters. Broken UTF-8 is compared as U+FFFD. The sizes count wide characters; a null text with the size 0 is
    // the empty text.
    static int CompareUTF8Natural(const std::string& a, const std::string& b, bool caseInsensitive = false);
    static int CompareUTF16Natural(const wchar_t* a, std::uint64_t sizeOfA, const wchar_t* b, std::uint64_t sizeOfB,
                                   bool caseInsensitive = false);

    // Whether a comes before b; for std::sort.
    static bool UTF8NaturalSortFunction(const std::string& a, const std::string& b);
    static bool UTF8NaturalSortFunctionCaseInsensitive(const std::string& a, const std::string& b);

    // ---- Software versions.

    // Numbers of up to 32 bits between dots, each as C reads it: "0x10" is 16, "010" is 8. White space around a number
    // is skipped and an empty place is 0. As many numbers are compared as b has, but at most maxComponents: "1.2.3"
    // equals "1.2", and "1.2" equals "1.2.0".
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
