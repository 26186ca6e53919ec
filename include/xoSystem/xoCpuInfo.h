// CPUInfo: what the processor is and can do.
//
//     const xo::CPUInfo& cpu = xo::CPUInfo::Get();
//     const auto sum = cpu.hasFeature(xo::CPUInfo::FeatureAVX2) ? &sumWithAvx2 : &sumPlain;
//     const unsigned workers = cpu.getCoreCount();
//
// The facts are read once, at the first use, and do not change. They may be used from any thread at any time. What is
// not known is 0 or empty. Nothing throws except std::bad_alloc. Counts are those of the whole machine, of all
// processor groups, whatever the process may use.
#ifndef XOSYSTEM_XOCPUINFO_H
#define XOSYSTEM_XOCPUINFO_H

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

namespace sysinfo {
struct ProcessorFacts;
}

// The state stays in the class: a feature is asked for in places that are called often.
class XOSYSTEM_API CPUInfo {
public:
    // The numbers stay; new ones are added at the end.
    enum Feature : int {
        FeatureSSE3 = 0,
        FeaturePCLMULQDQ,
        FeatureSSSE3,
        FeatureFMA,
        FeatureCMPXCHG16B,
        FeatureSSE4_1,
        FeatureSSE4_2,
        FeatureMOVBE,
        FeaturePOPCNT,
        FeatureAES,
        FeatureAVX,
        FeatureF16C,
        FeatureRDRAND,
        FeatureBMI1,
        FeatureAVX2,
        FeatureBMI2,
        FeatureERMS,
        FeatureAVX512F,
        FeatureAVX512DQ,
        FeatureRDSEED,
        FeatureADX,
        FeatureAVX512IFMA,
        FeatureCLFLUSHOPT,
        FeatureCLWB,
        FeatureAVX512CD,
        FeatureSHA,
        FeatureAVX512BW,
        FeatureAVX512VL,
        FeatureAVX512VBMI,
        FeatureAVX512VBMI2,
        FeatureGFNI,
        FeatureVAES,
        FeatureVPCLMULQDQ,
        FeatureAVX512VNNI,
        FeatureAVX512BITALG,
        FeatureAVX512VPOPCNTDQ,
        FeatureFSRM,
        FeatureAVX512FP16,
        FeatureAVXVNNI,
        FeatureAVX512BF16,
        FeatureLZCNT,
        FeatureSSE4A,
        FeatureRDTSCP,
        FeatureINVARIANT_TSC,
    };

    // Caches of one kind. Hybrid processors have several kinds of one level.
    struct Cache {
        // What it is for.
        enum Kind : int { Unified = 0, Instruction = 1, Data = 2 };

        unsigned level = 0;        // 1 is the nearest to the core
        Kind kind = Unified;       // of one cache
        std::uint64_t bytes = 0;   // the size of one
        unsigned lineBytes = 0;    // what is loaded at a time
        unsigned ways = 0;         // 0: fully associative, or unknown
        unsigned count = 0;        // how many of them there are
        unsigned threadsEach = 0;  // how many hardware threads share one
    };

    // Cores of one kind: the higher the class, the faster the core. Only hybrid processors have more than one.
    struct CoreClass {
        unsigned efficiencyClass = 0;  // as the system numbers them, from 0
        unsigned cores = 0;            // of this kind
        unsigned threads = 0;          // of these cores
    };

    // The processor of this machine. The first call reads it.
    static const CPUInfo& Get();

    // "SSE3"; "Unknown" for a number that is no feature.
    static const char* FeatureToString(Feature feature);

    // Whether the processor has the feature and the system saves the registers that it needs.
    bool hasFeature(Feature feature) const {
        return static_cast<unsigned>(feature) < 64 && (mFeatures >> static_cast<unsigned>(feature) & 1) != 0;
    }
    // The names of those, in the order of the enumerators.
    std::vector<std::string> getFeatureNames() const;

    const std::string& getVendor() const { return mVendor; }  // "AuthenticAMD"
    const std::string& getBrand() const { return mBrand; }    // "AMD EPYC 7763 64-Core Processor", for people
    // As the instruction CPUID tells them, with their extended parts.
    unsigned getFamily() const { return mFamily; }
    unsigned getModel() const { return mModel; }
    unsigned getStepping() const { return mStepping; }

    // What there is and is switched on.
    unsigned getPackageCount() const { return mPackages; }
    unsigned getCoreCount() const { return mCores; }
    unsigned getThreadCount() const { return mThreads; }  // logical processors
    unsigned getGroupCount() const { return mGroups; }    // of at most 64 threads

    // As the system noted it when it started; not the present frequency.
    unsigned getNominalMHz() const { return mNominalMHz; }
    // "KVMKVMKVM"; empty where none is announced. Windows itself runs on "Microsoft Hv" where its virtualization-based
    // security is on.
    const std::string& getHypervisor() const { return mHypervisor; }

    // By level, kind and falling size.
    const std::vector<Cache>& getCaches() const { return mCaches; }
    // By rising efficiency class.
    const std::vector<CoreClass>& getCoreClasses() const { return mCoreClasses; }

private:
    friend struct sysinfo::ProcessorFacts;
    CPUInfo() = default;

    std::uint64_t mFeatures = 0;  // a bit for each
    std::string mVendor;
    std::string mBrand;
    std::string mHypervisor;
    unsigned mFamily = 0;
    unsigned mModel = 0;
    unsigned mStepping = 0;
    unsigned mPackages = 0;
    unsigned mCores = 0;
    unsigned mThreads = 0;
    unsigned mGroups = 0;
    unsigned mNominalMHz = 0;
    std::vector<Cache> mCaches;
    std::vector<CoreClass> mCoreClasses;
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<CPUInfo::Feature> xoEnumEntries(CPUInfo::Feature);
XOSYSTEM_API xoEnumList<CPUInfo::Cache::Kind> xoEnumEntries(CPUInfo::Cache::Kind);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
