// The names of the enumerators of the system's facts, for xoEnumHelper.h.
#include "xoSystem/xoCpuInfo.h"
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoPowerStatus.h"
#include "xoSystem/xoSystemUtils.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoPowerStatus::AcLine> kAcLines[] = {{xoPowerStatus::AcLineOffline, "Offline"},
                                                           {xoPowerStatus::AcLineOnline, "Online"},
                                                           {xoPowerStatus::AcLineUnknown, "Unknown"}};

// Sorted by value and without gaps from 0 on, because CPUInfo::FeatureToString uses the value as the index. Each name
// is a literal, so that its data() ends with a NUL.
constexpr xoEnumEntry<CPUInfo::Feature> kFeatures[] = {
    {CPUInfo::FeatureSSE3, "SSE3"},
    {CPUInfo::FeaturePCLMULQDQ, "PCLMULQDQ"},
    {CPUInfo::FeatureSSSE3, "SSSE3"},
    {CPUInfo::FeatureFMA, "FMA"},
    {CPUInfo::FeatureCMPXCHG16B, "CMPXCHG16B"},
    {CPUInfo::FeatureSSE4_1, "SSE4_1"},
    {CPUInfo::FeatureSSE4_2, "SSE4_2"},
    {CPUInfo::FeatureMOVBE, "MOVBE"},
    {CPUInfo::FeaturePOPCNT, "POPCNT"},
    {CPUInfo::FeatureAES, "AES"},
    {CPUInfo::FeatureAVX, "AVX"},
    {CPUInfo::FeatureF16C, "F16C"},
    {CPUInfo::FeatureRDRAND, "RDRAND"},
    {CPUInfo::FeatureBMI1, "BMI1"},
    {CPUInfo::FeatureAVX2, "AVX2"},
    {CPUInfo::FeatureBMI2, "BMI2"},
    {CPUInfo::FeatureERMS, "ERMS"},
    {CPUInfo::FeatureAVX512F, "AVX512F"},
    {CPUInfo::FeatureAVX512DQ, "AVX512DQ"},
    {CPUInfo::FeatureRDSEED, "RDSEED"},
    {CPUInfo::FeatureADX, "ADX"},
    {CPUInfo::FeatureAVX512IFMA, "AVX512IFMA"},
    {CPUInfo::FeatureCLFLUSHOPT, "CLFLUSHOPT"},
    {CPUInfo::FeatureCLWB, "CLWB"},
    {CPUInfo::FeatureAVX512CD, "AVX512CD"},
    {CPUInfo::FeatureSHA, "SHA"},
    {CPUInfo::FeatureAVX512BW, "AVX512BW"},
    {CPUInfo::FeatureAVX512VL, "AVX512VL"},
    {CPUInfo::FeatureAVX512VBMI, "AVX512VBMI"},
    {CPUInfo::FeatureAVX512VBMI2, "AVX512VBMI2"},
    {CPUInfo::FeatureGFNI, "GFNI"},
    {CPUInfo::FeatureVAES, "VAES"},
    {CPUInfo::FeatureVPCLMULQDQ, "VPCLMULQDQ"},
    {CPUInfo::FeatureAVX512VNNI, "AVX512VNNI"},
    {CPUInfo::FeatureAVX512BITALG, "AVX512BITALG"},
    {CPUInfo::FeatureAVX512VPOPCNTDQ, "AVX512VPOPCNTDQ"},
    {CPUInfo::FeatureFSRM, "FSRM"},
    {CPUInfo::FeatureAVX512FP16, "AVX512FP16"},
    {CPUInfo::FeatureAVXVNNI, "AVXVNNI"},
    {CPUInfo::FeatureAVX512BF16, "AVX512BF16"},
    {CPUInfo::FeatureLZCNT, "LZCNT"},
    {CPUInfo::FeatureSSE4A, "SSE4A"},
    {CPUInfo::FeatureRDTSCP, "RDTSCP"},
    {CPUInfo::FeatureINVARIANT_TSC, "INVARIANT_TSC"},
};

constexpr xoEnumEntry<CPUInfo::Cache::Kind> kCacheKinds[] = {
    {CPUInfo::Cache::Unified, "Unified"}, {CPUInfo::Cache::Instruction, "Instruction"}, {CPUInfo::Cache::Data, "Data"}};

constexpr xoEnumEntry<xoSystemUtils::ReportPart> kReportParts[] = {
    {xoSystemUtils::ReportCpu, "Cpu"},           {xoSystemUtils::ReportOs, "Os"},
    {xoSystemUtils::ReportMemory, "Memory"},     {xoSystemUtils::ReportMachine, "Machine"},
    {xoSystemUtils::ReportDisplays, "Displays"}, {xoSystemUtils::ReportGraphics, "Graphics"},
    {xoSystemUtils::ReportVolumes, "Volumes"},   {xoSystemUtils::ReportDisks, "Disks"},
    {xoSystemUtils::ReportAll, "All"},           {xoSystemUtils::ReportIdentity, "Identity"}};

}  // namespace

xoEnumList<CPUInfo::Feature> xoEnumEntries(CPUInfo::Feature) { return kFeatures; }

xoEnumList<CPUInfo::Cache::Kind> xoEnumEntries(CPUInfo::Cache::Kind) { return kCacheKinds; }

xoEnumList<xoSystemUtils::ReportPart> xoEnumEntries(xoSystemUtils::ReportPart) {
    return {kReportParts, /*areFlags=*/true};
}

xoEnumList<xoPowerStatus::AcLine> xoEnumEntries(xoPowerStatus::AcLine) { return kAcLines; }

}  // namespace xo
