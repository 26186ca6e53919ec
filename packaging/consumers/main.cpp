// A program of somebody else's that takes the library as it is delivered. What it prints is in expected.txt.
#include <algorithm>
#include <iostream>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include "xoSystem/xoSystem.h"

namespace {

// Memory changes hands in both directions: what one side allocates, the other frees.
void exchangeStringsAndVectors() {
    std::vector<std::string> towns = xo::xoStringUtils::Split(" Z\xC3\xBCrich ; Oslo ;file10;file2", ';');
    for (std::string& town : towns) xo::xoStringUtils::trim(town);
    std::sort(towns.begin(), towns.end(), &xo::xoStringUtils::UTF8NaturalSortFunction);
    towns.push_back(xo::xoStringUtils::roundNumber(2.0 / 3, 3));
    for (const std::string& town : towns) std::cout << town << '\n';
}

void printLine(const std::string& message, xo::xoLogType type, const std::string& qualifier, void* prefix) {
    std::cout << *static_cast<const std::string*>(prefix) << type << ' ' << qualifier << ' ' << message << '\n';
}

class Doubler final : public xo::xoThread {
public:
    explicit Doubler(std::vector<int>& numbers) : mNumbers(numbers) {}
    ~Doubler() override { waitThread(INT_MAX); }

private:
    void run() override {
        for (int& number : mNumbers) number *= 2;
    }
    std::vector<int>& mNumbers;
};

// The library calls back: a function, and a virtual function on a thread of its own.
void beCalledBack() {
    std::string prefix = "called: ";
    xo::xoLog::edit().installCustomHandler(&printLine, &prefix);
    xo::xoLogObject(xo::xoLogWarning, "net") << "retry " << 3;
    xo::xoLog::edit().installCustomHandler(nullptr, nullptr);

    std::vector<int> numbers{1, 2, 3};
    Doubler(numbers).startThread("doubler");
    for (const int number : numbers) std::cout << number << '\n';
}

void failOnPurpose() { throw std::out_of_range("thrown by the host, passed on by the library"); }
void fault() { *static_cast<volatile int*>(nullptr) = 1; }

void catchItsExceptions() {
    try {
        xo::xoVariant::xoVariantMapImpl().erasePathRegEx("(");
    } catch (const std::regex_error&) {
        std::cout << "std::regex_error\n";
    }
    for (void (*const function)() : {&failOnPurpose, &fault}) {
        try {
            xo::exception::impl::ExecGuardedCode(function);
        } catch (const std::exception& failure) {
            std::cout << failure.what() << '\n';
        }
    }
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);
    xo::xoLog::edit().setEchoToConsole(false);
    exchangeStringsAndVectors();
    beCalledBack();
    catchItsExceptions();
    xo::terminateXoSystem();
}
