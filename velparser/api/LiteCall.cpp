// What every method of VEL::Parser::Lite needs: arguments, results, and guards against
// arguments with code that destroys the object during the call.

#include "velparser/api/Lite_p.h"

#include <limits>

namespace velparser {

namespace {

/// A record that only refers to a database does not know the handlers of the record that
/// owns the database, and the owning record does not know those of the other.
bool mayHaveHandlers(pTHX_ const LiteRecord *record)
{
    return !record->owns || record->actionHandler != nullptr ||
           AvFILLp(record->changeHandlers) >= 0 || (liteContext(aTHX).wrappers != nullptr);
}

/// Whether reading the elements runs code. Such code may change the array.
bool elementsRunCode(pTHX_ AV *array)
{
    if (SvRMAGICAL(array)) {
        return true;
    }
    const std::span<SV *> elements(AvARRAY(array), static_cast<std::size_t>(AvFILLp(array) + 1));
    return std::ranges::any_of(
        elements, [&](SV *element) { return element != nullptr && runsCode(aTHX_ element); });
}

const char *copiedText(pTHX_ const char *text)
{
    return SvPVX_const(sv_2mortal(newSVpv(text, 0)));
}

/// Making the text of a number would change the caller's element, so a copy is used.
const char *elementText(pTHX_ SV *element, bool copy)
{
    if (SvPOK(element) && !copy) {
        return byteText(aTHX_ element);
    }
    SV *plain = sv_2mortal(newSV(0));
    sv_setsv_nomg(plain, element);
    return copiedText(aTHX_ byteText(aTHX_ plain));
}

bool isPlainScalar(SV *value)
{
    return SvTYPE(value) < SVt_PVAV && !isGV_with_GP(value) && !isREGEXP(value);
}

} // namespace

void LiteCall::guard(pTHX)
{
    if (copyTexts_) {
        return;
    }
    copyTexts_ = true;
    if (record_ == nullptr) {
        return;
    }
    sv_2mortal(SvREFCNT_inc_simple_NN(SvRV(argument(aTHX_ 0))));
    // Perl restores it when the method ends, also by an exception.
    SAVEI16(record_->guards);
    ++record_->guards;
}

void LiteCall::guardArguments(pTHX)
{
    for (int i = 0; i < count_; ++i) {
        sv_2mortal(SvREFCNT_inc_simple_NN(argument(aTHX_ i)));
    }
    guard(aTHX);
}

void LiteCall::keepAlive(pTHX)
{
    mayRunHandlers_ = true;
    if (mayHaveHandlers(aTHX_ record_) || (liteContext(aTHX).handlerError != nullptr)) {
        guard(aTHX);
    }
    dropHandlerError(aTHX);
}

std::int32_t LiteCall::integer(pTHX_ int i) const
{
    using Limits = std::numeric_limits<std::int32_t>;
    SV *value = argument(aTHX_ i);
    SvGETMAGIC(value);
    const IV number = SvOK(value) ? SvIV_nomg(value) : 0;
    return static_cast<std::int32_t>(std::clamp<IV>(number, Limits::min(), Limits::max()));
}

AV *LiteCall::array(pTHX_ int i, const char *name) const
{
    SV *value = argument(aTHX_ i);
    SvGETMAGIC(value);
    if (!SvROK(value) || SvTYPE(SvRV(value)) != SVt_PVAV) {
        croak("%s is not an array reference", name);
    }
    return MUTABLE_AV(sv_2mortal(SvREFCNT_inc_simple_NN(SvRV(value))));
}

AV *LiteCall::optionalArray(pTHX_ int i, const char *name) const
{
    SV *value = argument(aTHX_ i);
    SvGETMAGIC(value);
    return SvOK(value) ? array(aTHX_ i, name) : nullptr;
}

SV *LiteCall::output(pTHX_ int i) const
{
    SV *value = argument(aTHX_ i);
    SvGETMAGIC(value);
    if (!SvROK(value) || !isPlainScalar(SvRV(value))) {
        croak("VEL::Parser::Lite::%s: value is not a reference", method_.name);
    }
    return SvRV(value);
}

void LiteCall::rethrow(pTHX)
{
    if (SV *error = takeHandlerError(aTHX)) {
        croak_sv(sv_2mortal(error));
    }
}

SV *LiteCall::number(pTHX_ IV value) const
{
    dXSTARG;
    sv_setiv(TARG, value);
    return TARG;
}

SV *LiteCall::string(pTHX_ std::string_view text) const
{
    dXSTARG;
    sv_setpvn(TARG, text.data(), text.size());
    SvUTF8_off(TARG);
    return TARG;
}

void replaceElements(pTHX_ AV *target, AV *values)
{
    av_clear(target);
    const SSize_t count = AvFILLp(values) + 1;
    if (count == 0) {
        return;
    }
    if (SvRMAGICAL(target)) {
        const bool tied = SvTIED_mg(MUTABLE_SV(target), PERL_MAGIC_tied);
        for (SSize_t i = 0; i < count; ++i) {
            SV *element = newSVsv(AvARRAY(values)[i]);
            // A tied array gets a copy; any other array keeps the element itself.
            av_push(target, tied ? sv_2mortal(element) : element);
        }
        return;
    }
    av_extend(target, count - 1);
    for (SSize_t i = 0; i < count; ++i) {
        av_store(target, i, SvREFCNT_inc_simple_NN(AvARRAY(values)[i]));
    }
}

AV *newArray(pTHX_ const velStringList &texts)
{
    AV *array = newAV();
    sv_2mortal(MUTABLE_SV(array));
    if (texts.empty()) {
        return array;
    }
    av_extend(array, static_cast<SSize_t>(texts.size()) - 1);
    for (const char *text : texts) {
        av_push(array, text ? newSVpv(text, 0) : newSV(0));
    }
    return array;
}

AV *newArray(pTHX_ const std::vector<std::int32_t> &numbers)
{
    AV *array = newAV();
    sv_2mortal(MUTABLE_SV(array));
    for (const std::int32_t number : numbers) {
        av_push(array, newSViv(number));
    }
    return array;
}

std::span<const char *> elementTexts(pTHX_ AV *array, UndefinedElement undefined)
{
    const bool copies = elementsRunCode(aTHX_ array);
    const auto count = static_cast<std::size_t>(av_count(array));
    SV *buffer = sv_2mortal(newSV((count + 1) * sizeof(char *)));
    auto **texts = reinterpret_cast<const char **>(SvPVX(buffer));
    for (std::size_t i = 0; i < count; ++i) {
        SV **place = av_fetch(array, static_cast<SSize_t>(i), 0);
        SV *element = place != nullptr ? *place : &PL_sv_undef;
        if (copies) {
            sv_2mortal(SvREFCNT_inc_simple_NN(element));
        }
        SvGETMAGIC(element);
        if (!SvOK(element) && undefined == UndefinedElement::Croaks) {
            croak("Undefined element in array or fetch error");
        }
        texts[i] = SvOK(element) ? elementText(aTHX_ element, copies) : "";
    }
    texts[count] = nullptr;
    return {texts, count};
}

} // namespace velparser
