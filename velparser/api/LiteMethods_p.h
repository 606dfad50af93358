// The bodies of the methods of VEL::Parser::Lite, grouped by source. Lite.pm says what
// each of them does, because its users read it there.
#pragma once

#include "velparser/api/Lite_p.h"

namespace velparser {

// LiteObject.cpp
SV *liteNew(pTHX_ LiteCall &call);
SV *liteDestroy(pTHX_ LiteCall &call);
SV *liteIsSameDatabase(pTHX_ LiteCall &call);

// LiteText.cpp
SV *liteGetObjectVEL(pTHX_ LiteCall &call);
SV *liteGetTreeText(pTHX_ LiteCall &call);
SV *liteGetFormattedVEL(pTHX_ LiteCall &call);
SV *liteLoadVELLine(pTHX_ LiteCall &call);
SV *liteGetVELState(pTHX_ LiteCall &call);
SV *liteSetVELState(pTHX_ LiteCall &call);
SV *liteLoadVELData(pTHX_ LiteCall &call);
SV *liteLoadLibraryData(pTHX_ LiteCall &call);
SV *liteLoadVELFile(pTHX_ LiteCall &call);
SV *liteReadLibraries(pTHX_ LiteCall &call);
SV *liteReadNamedLibraries(pTHX_ LiteCall &call);

// LiteChildren.cpp
SV *liteGetChildObjectList(pTHX_ LiteCall &call);
SV *liteGetChildParamList(pTHX_ LiteCall &call);
SV *liteGetObjectsByName(pTHX_ LiteCall &call);
SV *liteGetObjectsByType(pTHX_ LiteCall &call);
SV *liteGetChildList(pTHX_ LiteCall &call);

// LiteTree.cpp
SV *liteIsLibrary(pTHX_ LiteCall &call);
SV *liteIsValid(pTHX_ LiteCall &call);
SV *liteSetValid(pTHX_ LiteCall &call);
SV *liteSetValidEx(pTHX_ LiteCall &call);
SV *liteGetValidationLevel(pTHX_ LiteCall &call);
SV *liteSetValidationLevel(pTHX_ LiteCall &call);
SV *liteIsObject(pTHX_ LiteCall &call);
SV *liteHavePath(pTHX_ LiteCall &call);
SV *liteCreateObject(pTHX_ LiteCall &call);
SV *liteCreateParam(pTHX_ LiteCall &call);
SV *liteDeleteObj(pTHX_ LiteCall &call);
SV *liteDeleteParam(pTHX_ LiteCall &call);
SV *liteGetCurrentPath(pTHX_ LiteCall &call);
SV *litePopPath(pTHX_ LiteCall &call);
SV *litePushPath(pTHX_ LiteCall &call);
SV *liteChangePath(pTHX_ LiteCall &call);
SV *liteCleanPath(pTHX_ LiteCall &call);

// LiteValues.cpp
SV *liteGetStringValue(pTHX_ LiteCall &call);
SV *liteSetStringValue(pTHX_ LiteCall &call);
SV *liteGetStringList(pTHX_ LiteCall &call);
SV *liteGetIntegerValue(pTHX_ LiteCall &call);
SV *liteGetIntegerList(pTHX_ LiteCall &call);
SV *liteGetLogicalValue(pTHX_ LiteCall &call);
SV *liteGetLogicalList(pTHX_ LiteCall &call);

// LiteHandlers.cpp
SV *liteRegisterActionHandler(pTHX_ LiteCall &call);
SV *liteInvokeAction(pTHX_ LiteCall &call);
SV *liteAddChangeHandler(pTHX_ LiteCall &call);
SV *liteClearChangeHandlers(pTHX_ LiteCall &call);

} // namespace velparser
