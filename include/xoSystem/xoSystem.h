// The whole library. A host may as well include only the headers of the classes that it uses.
#ifndef XOSYSTEM_XOSYSTEM_H
#define XOSYSTEM_XOSYSTEM_H

#include "xoSystem/xoConcurrentPool.h"
#include "xoSystem/xoCsvFileReader.h"
#include "xoSystem/xoCsvStream.h"
#include "xoSystem/xoDataStream.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoException.h"
#include "xoSystem/xoExport.h"
#include "xoSystem/xoIniFile.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoIoDevice.h"
#include "xoSystem/xoLegacyThread.h"
#include "xoSystem/xoLockFile.h"
#include "xoSystem/xoLog.h"
#include "xoSystem/xoMutex.h"
#include "xoSystem/xoResource.h"
#include "xoSystem/xoSemaphore.h"
#include "xoSystem/xoStringUtils.h"
#include "xoSystem/xoSystemError.h"
#include "xoSystem/xoSystemUtils.h"
#include "xoSystem/xoThread.h"
#include "xoSystem/xoVariant.h"
#include "xoSystem/xoVectorConstants.h"
#include "xoSystem/xoWaitCondition.h"
#include "xoSystem/xoWorkThread.h"

#endif
