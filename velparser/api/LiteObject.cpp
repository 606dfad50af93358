#include "velparser/api/Lite_p.h"

namespace velparser {

namespace {

constexpr char packageName[] = "VEL::Parser::Lite";

/// Frees the record, and with it the database that it owns. While one of its
/// handlers runs the database is in use further up the C++ stack; then nothing
/// is freed, now or later: a leak is better than a crash.
const char *freeRecord(pTHX_ LiteRecord *record)
{
    if (record->running > 0)
        return "DESTROY: a handler of this object is running";
    if (record->owns)
        velDestroyHandle(record->handle);
    else
        forgetWrapper(aTHX_ record);
    SvREFCNT_dec(MUTABLE_SV(record->changeHandlers));
    SvREFCNT_dec(record->actionHandler);
    Safefree(record);
    return nullptr;
}

/// Called when the scalar behind an object goes: covers a derived class whose
/// own DESTROY does not call ours.
int freeWithScalar(pTHX_ SV *, MAGIC *magic)
{
    if (magic->mg_ptr)
        freeRecord(aTHX_ reinterpret_cast<LiteRecord *>(magic->mg_ptr));
    magic->mg_ptr = nullptr;
    return 0;
}

/// Whether the package has been loaded into this interpreter.
bool hasContext(pTHX)
{
    return liteContextIndex >= 0 && liteContextIndex < PL_my_cxt_size &&
           PL_my_cxt_list[liteContextIndex];
}

MAGIC *findMagic(SV *scalar)
{
    if (SvTYPE(scalar) < SVt_PVMG)
        return nullptr;
    MAGIC *first = SvMAGIC(scalar);
    if (first && first->mg_virtual == &liteRecordMagic)
        return first;
    return mg_findext(scalar, PERL_MAGIC_ext, &liteRecordMagic);
}

/// The mark of an object of the package or a derived class; null for anything
/// else.
MAGIC *findObjectMagic(pTHX_ SV *object)
{
    if (!hasContext(aTHX) || !SvROK(object) || !SvOBJECT(SvRV(object)))
        return nullptr;
    if (SvSTASH(SvRV(object)) != liteContext(aTHX).package && !sv_derived_from(object, packageName))
        return nullptr;
    return findMagic(SvRV(object));
}

} // namespace

MGVTBL liteRecordMagic = {nullptr,        nullptr, nullptr, nullptr,
                          freeWithScalar, nullptr, nullptr, nullptr};

SV *newLiteReference(pTHX_ velHandle *handle, bool owns)
{
    LiteRecord *record = nullptr;
    Newxz(record, 1, LiteRecord);
    record->handle = handle;
    record->owns = owns;
    if (owns)
        record->changeHandlers = newAV();
    SV *object = sv_setref_pv(newSV(0), packageName, record);
    sv_magicext(SvRV(object), nullptr, PERL_MAGIC_ext, &liteRecordMagic,
                reinterpret_cast<const char *>(record), 0);
    return object;
}

LiteRecord *findLiteRecord(pTHX_ SV *object)
{
    const MAGIC *magic = findObjectMagic(aTHX_ object);
    return magic ? reinterpret_cast<LiteRecord *>(magic->mg_ptr) : nullptr;
}

bool isEmptied(pTHX_ SV *object)
{
    const MAGIC *magic = findObjectMagic(aTHX_ object);
    return magic && !magic->mg_ptr;
}

SV *liteNew(pTHX_ LiteCall &)
{
    velHandle *handle = velCreateHandle();
    if (!handle)
        croak("VEL::Parser::Lite::NEW: out of memory");
    SV *object = sv_2mortal(newLiteReference(aTHX_ handle, true));
    if (const char *error = watchChanges(liteRecord(aTHX_ object)))
        croak("VEL::Parser::Lite::NEW: %s", error);
    return object;
}

/// Called explicitly and again when the object goes, it works once.
SV *liteDestroy(pTHX_ LiteCall &call)
{
    if (!call.record())
        return call.message(aTHX_ nullptr);
    SV *scalar = SvRV(call.argument(aTHX_ 0));
    if (const char *error = freeRecord(aTHX_ call.record()))
        return call.message(aTHX_ error);
    findMagic(scalar)->mg_ptr = nullptr;
    sv_setiv(scalar, 0);
    return call.message(aTHX_ nullptr);
}

} // namespace velparser
