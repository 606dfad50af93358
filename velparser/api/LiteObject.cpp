// The Perl object of VEL::Parser::Lite: creation, destruction, and the record that it
// owns.

#include "velparser/api/Lite_p.h"

namespace velparser {

namespace {

constexpr char packageName[] = "VEL::Parser::Lite";

/// Frees a record and the database that it owns. If a caller on the C++ stack still uses
/// the record, nothing is freed, now or later: a leak is better than a crash.
void freeRecord(pTHX_ LiteRecord *record)
{
    if (isInUse(record)) {
        return;
    }
    if (record->owns) {
        velDestroyHandle(record->handle);
    } else {
        forgetWrapper(aTHX_ record);
    }
    SvREFCNT_dec(MUTABLE_SV(record->changeHandlers));
    SvREFCNT_dec(record->actionHandler);
    Safefree(record);
}

/// Called when the scalar of an object is freed. Needed for a derived class whose own
/// DESTROY does not call ours.
int freeWithScalar(pTHX_ SV *, MAGIC *magic)
{
    if (char *record = std::exchange(magic->mg_ptr, nullptr)) {
        freeRecord(aTHX_ reinterpret_cast<LiteRecord *>(record));
    }
    return 0;
}

/// The copy of an object in a new thread is empty: the record stays with the thread that
/// made it.
int emptyCopy(pTHX_ MAGIC *magic, CLONE_PARAMS *)
{
    PERL_UNUSED_CONTEXT;
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
    if (SvTYPE(scalar) < SVt_PVMG) {
        return nullptr;
    }
    MAGIC *first = SvMAGIC(scalar);
    if (first != nullptr && first->mg_virtual == &liteRecordMagic) {
        return first;
    }
    return mg_findext(scalar, PERL_MAGIC_ext, &liteRecordMagic);
}

/// The mark of an object of the package or a derived class; null for any other value.
MAGIC *findObjectMagic(pTHX_ SV *object)
{
    if (!hasContext(aTHX) || !SvROK(object) || !SvOBJECT(SvRV(object))) {
        return nullptr;
    }
    if (SvSTASH(SvRV(object)) != liteContext(aTHX).package &&
        !sv_derived_from(object, packageName)) {
        return nullptr;
    }
    return findMagic(SvRV(object));
}

} // namespace

MGVTBL liteRecordMagic = {nullptr,        nullptr, nullptr,   nullptr,
                          freeWithScalar, nullptr, emptyCopy, nullptr};

SV *newLiteReference(pTHX_ velHandle *handle, bool owns)
{
    LiteRecord *record = nullptr;
    Newxz(record, 1, LiteRecord);
    record->handle = handle;
    record->owns = owns;
    if (owns) {
        record->changeHandlers = newAV();
    }
    SV *object = sv_setref_pv(newSV(0), packageName, record);
    MAGIC *magic = sv_magicext(SvRV(object), nullptr, PERL_MAGIC_ext, &liteRecordMagic,
                               reinterpret_cast<const char *>(record), 0);
    magic->mg_flags |= MGf_DUP;
    return object;
}

LiteRecord *findLiteRecord(pTHX_ SV *object)
{
    const MAGIC *magic = findObjectMagic(aTHX_ object);
    return magic != nullptr ? reinterpret_cast<LiteRecord *>(magic->mg_ptr) : nullptr;
}

const char *emptyObject(pTHX_ SV *object)
{
    MAGIC *magic = findObjectMagic(aTHX_ object);
    if (magic == nullptr || magic->mg_ptr == nullptr) {
        return nullptr;
    }
    auto *record = reinterpret_cast<LiteRecord *>(magic->mg_ptr);
    if (isInUse(record)) {
        return "DESTROY: the object is in use";
    }
    // First, because freeing the record may run code that has the object.
    magic->mg_ptr = nullptr;
    sv_setiv(SvRV(object), 0);
    freeRecord(aTHX_ record);
    return nullptr;
}

SV *holdObject(pTHX_ SV *object)
{
    ++findLiteRecord(aTHX_ object)->guards;
    return newRV_inc(SvRV(object));
}

void releaseObject(pTHX_ SV *held)
{
    if (LiteRecord *record = findLiteRecord(aTHX_ held)) {
        --record->guards;
    }
    SvREFCNT_dec_NN(held);
}

bool isEmptied(pTHX_ SV *object)
{
    const MAGIC *magic = findObjectMagic(aTHX_ object);
    return magic != nullptr && magic->mg_ptr == nullptr;
}

SV *liteNew(pTHX_ LiteCall &)
{
    velHandle *handle = velCreateHandle();
    if (handle == nullptr) {
        croak("VEL::Parser::Lite::NEW: out of memory");
    }
    SV *object = sv_2mortal(newLiteReference(aTHX_ handle, true));
    if (const char *error = watchChanges(liteRecord(aTHX_ object))) {
        croak("VEL::Parser::Lite::NEW: %s", error);
    }
    return object;
}

/// It may be called explicitly, and is called again when the object is freed; only the
/// first call has an effect.
SV *liteDestroy(pTHX_ LiteCall &call)
{
    return call.message(aTHX_ emptyObject(aTHX_ call.argument(aTHX_ 0)));
}

SV *liteIsSameDatabase(pTHX_ LiteCall &call)
{
    SV *argument = call.argument(aTHX_ 1);
    SvGETMAGIC(argument);
    const LiteRecord *other = findLiteRecord(aTHX_ argument);
    return call.number(aTHX_(other != nullptr) && other->handle == call.handle());
}

} // namespace velparser
