#pragma once

/// Everything that modules take from the library. Names live in the namespace `kpx`; this header
/// also brings them into the global namespace, where modules expect them.

#include "kpx/config/CFGHeader.h"
#include "kpx/report/Error.h"
#include "kpx/settings/AllSettings.h"
#include "kpx/support/CKpxBaseObjectsUtil.h"
#include "kpx/support/TextStore.h"
#include "kpx/text/CKpxCalendar.h"
#include "kpx/text/CKpxString.h"
#include "kpx/text/CString.h"
#include "kpx/text/GpsTime.h"
#include "kpx/text/NumberText.h"
#include "kpx/text/PrintScan.h"
#include "kpx/text/TextOrder.h"
#include "kpx/text/TextTools.h"
#include "kpx/text/TimeValue.h"
#include "kpx/text/VariableTable.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/MarkupFormat.h"

using namespace kpx;  // NOLINT(google-build-using-namespace): what modules expect
