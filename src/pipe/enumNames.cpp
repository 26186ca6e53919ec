// The names of the enumerators of the pipe classes, for xoEnumHelper.
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoNamedPipe.h"

namespace xo {
namespace {

constexpr xoEnumEntry<xoNamedPipe::Result> kResults[] = {{xoNamedPipe::ResultOk, "Ok"},
                                                         {xoNamedPipe::ResultEnd, "End"},
                                                         {xoNamedPipe::ResultTimeout, "Timeout"},
                                                         {xoNamedPipe::ResultCanceled, "Canceled"},
                                                         {xoNamedPipe::ResultNotFound, "NotFound"},
                                                         {xoNamedPipe::ResultBusy, "Busy"},
                                                         {xoNamedPipe::ResultRefused, "Refused"},
                                                         {xoNamedPipe::ResultInvalid, "Invalid"},
                                                         {xoNamedPipe::ResultTooLong, "TooLong"},
                                                         {xoNamedPipe::ResultFailed, "Failed"}};
constexpr xoEnumEntry<xoNamedPipe::ConnectMode> kConnectModes[] = {{xoNamedPipe::ConnectAwaitServer, "AwaitServer"},
                                                                   {xoNamedPipe::ConnectIfServing, "IfServing"}};
constexpr xoEnumEntry<xoNamedPipe::ServerTrust> kServerTrusts[] = {
    {xoNamedPipe::TrustSameUserAndSystem, "SameUserAndSystem"}, {xoNamedPipe::TrustAnyone, "Anyone"}};
constexpr xoEnumEntry<xoNamedPipeServer::Access> kAccesses[] = {{xoNamedPipeServer::AccessSameUser, "SameUser"},
                                                                {xoNamedPipeServer::AccessLocalUsers, "LocalUsers"}};

}  // namespace

xoEnumList<xoNamedPipe::Result> xoEnumEntries(xoNamedPipe::Result) { return kResults; }

xoEnumList<xoNamedPipe::ConnectMode> xoEnumEntries(xoNamedPipe::ConnectMode) { return kConnectModes; }

xoEnumList<xoNamedPipe::ServerTrust> xoEnumEntries(xoNamedPipe::ServerTrust) { return kServerTrusts; }

xoEnumList<xoNamedPipeServer::Access> xoEnumEntries(xoNamedPipeServer::Access) { return kAccesses; }

}  // namespace xo
