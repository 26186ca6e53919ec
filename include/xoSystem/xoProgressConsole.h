// xoProgressConsole: shows a work on the console, as a bar that the log's lines do not tear.
//
//     xo::xoProgressConsole bar;
//     import(folder, &bar);   // Import: index  [=======>   ]  71 %  1,204 of 29,000  12,300/s  0:05 left
//
// The bar is on standard error if that is a console, else on standard output if that is one. Where neither is, for
// instance in a build's log, it writes a plain line to standard error after 10, 20, 40, 80, 160 and each further 300
// seconds. Without any valid handle it writes nothing.
//
// A timer of the system's thread pool draws, ten times a second, so that the time runs on within a long step, and a
// console that waits because somebody selects text in it delays no work. The thread that works writes only the line at
// the end:
//
//     Import: done, 2.60 GiB in 0:31
//     Import: stopped at 47 % after 0:12
//     Import: canceled at 47 % after 0:12
//
// Several views may exist: the first that draws has the bottom line, the others wait for it. A view must not be a
// static object of a DLL, because its destructor waits for the timer, and should not be a local variable of a guarded
// function, because after a fault its timer would go on drawing. Only std::bad_alloc is thrown, from the constructor,
// WriteLine and FormatLine.
#ifndef XOSYSTEM_XOPROGRESSCONSOLE_H
#define XOSYSTEM_XOPROGRESSCONSOLE_H

#include <memory>
#include <string>
#include <string_view>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoProgress.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

class XOSYSTEM_API xoProgressConsole final : public xoProgressNotifier {
public:
    // For the constructor, joined by |.
    enum Flag : int {
        ProgressConsoleErase = 1,   // a work that ends leaves no line
        ProgressConsoleNoLines = 2  // writes nothing where there is no console
    };

    // Other bits of the flags are ignored. A work that ends within the delay shows nothing.
    explicit xoProgressConsole(int flags = 0, unsigned delayMs = 500);
    ~xoProgressConsole() override;

    // false takes the bar away, for example while the host asks its user something; true lets it come again. Any thread
    // may call it.
    void setVisible(bool visible);

    // Writes a line and a line end to standard output, above a bar. A host that writes to std::cout itself tears the
    // bar. Any thread may call it.
    static void WriteLine(std::string_view line);

    // What the bar shows of a state, in no more than that many columns, but never less than the per cent. The tick
    // moves the bar of a work whose total is not known. Control characters in the texts are made visible. A fraction
    // below 0 and NaN count as 0, one above 1 as 1.
    static std::string FormatLine(const xoProgressState& state, unsigned columns, unsigned tick = 0);

private:
    struct Private;
    void onProgress(const xoProgressState& state) override;

    std::unique_ptr<Private> mPrivate;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoProgressConsole::Flag> xoEnumEntries(xoProgressConsole::Flag);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
