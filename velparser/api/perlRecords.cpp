// Records as Perl code gives them: an array of hashes.
//
// Reading a Perl hash may run code, and code may die. So makeRecordTexts runs in a trap and
// makes plain texts from the entries, one after the other, and C++ reads these texts.
#include "velparser/api/perlRecords_p.h"

#include <cstring>
#include <string_view>

namespace velparser {

namespace {

/// Before the name of an entry that is an array of texts.
constexpr char listMark = '@';

/// The target of a reference, kept alive as long as the caller's frame. Null if the value
/// is not a reference to that type.
SV *heldTarget(pTHX_ SV *reference, svtype type)
{
    SvGETMAGIC(reference);
    if (!SvROK(reference) || SvTYPE(SvRV(reference)) != type) {
        return nullptr;
    }
    return sv_2mortal(SvREFCNT_inc_NN(SvRV(reference)));
}

void pushText(pTHX_ AV *texts, SV **value)
{
    av_push(texts, newSVpv(value ? byteText(aTHX_ * value) : "", 0));
}

/// Their number, and each of them.
void pushTexts(pTHX_ AV *texts, SV **list)
{
    AV *values = list != nullptr ? MUTABLE_AV(heldTarget(aTHX_ * list, SVt_PVAV)) : nullptr;
    const SSize_t count = values != nullptr ? static_cast<SSize_t>(av_count(values)) : 0;
    av_push(texts, newSViv(count));
    for (SSize_t i = 0; i < count; ++i) {
        pushText(aTHX_ texts, av_fetch(values, i, 0));
    }
}

void pushEntry(pTHX_ AV *texts, HV *record, const char *name)
{
    const bool isList = *name == listMark;
    const char *key = isList ? name + 1 : name;
    SV **entry = hv_fetch(record, key, static_cast<I32>(std::strlen(key)), 0);
    if (isList) {
        pushTexts(aTHX_ texts, entry);
    } else {
        pushText(aTHX_ texts, entry);
    }
}

/// Called as Perl code, so that exceptions of the code that it calls are trapped.
XSPROTO(makeRecordTexts)
{
    dXSARGS;
    if (items < 1) {
        croak_xs_usage(cv, "records, names");
    }
    AV *records = MUTABLE_AV(SvRV(ST(0)));
    AV *texts = newAV();
    SV *reference = sv_2mortal(newRV_noinc(MUTABLE_SV(texts)));
    const auto count = static_cast<SSize_t>(av_count(records));
    for (SSize_t i = 0; i < count; ++i) {
        SV **element = av_fetch(records, i, 0);
        HV *record =
            element != nullptr ? MUTABLE_HV(heldTarget(aTHX_ * element, SVt_PVHV)) : nullptr;
        if (record == nullptr) {
            croak("a record is not a hash");
        }
        for (I32 name = 1; name < items; ++name) {
            pushEntry(aTHX_ texts, record, SvPVX_const(ST(name)));
        }
    }
    ST(0) = reference;
    XSRETURN(1);
}

/// The texts of all records, one after the other.
class RecordTexts
{
public:
    /// `names` are the names of a record's entries, in the order in which they are read.
    RecordTexts(pTHX_ AV *records, std::initializer_list<const char *> names) : perl_(aTHX)
    {
        const std::span<SV *> arguments = mortalValues(aTHX_ 1 + names.size());
        arguments[0] = sv_2mortal(newRV_inc(MUTABLE_SV(records)));
        std::ranges::transform(names, arguments.begin() + 1,
                               [&](const char *name) { return sv_2mortal(newSVpv(name, 0)); });
        const PerlResult result = callXsub(aTHX_ makeRecordTexts, arguments, G_SCALAR);
        if (result.error != nullptr || result.exited) {
            error_ = result.error != nullptr ? result.error : sv_2mortal(newSVpvs("exit called"));
        } else {
            texts_ = MUTABLE_AV(SvRV(result.value));
        }
    }

    [[nodiscard]] SV *error() const { return error_; }
    [[nodiscard]] bool atEnd() const { return error_ != nullptr || next_ > AvFILLp(texts_); }

    [[nodiscard]] std::string text()
    {
        SV *value = next();
        return {SvPVX_const(value), SvCUR(value)};
    }

    [[nodiscard]] std::vector<std::string> list()
    {
        pTHX = perl_;
        SV *count = next();
        std::vector<std::string> texts(static_cast<std::size_t>(SvIV(count)));
        for (std::string &each : texts) {
            each = text();
        }
        return texts;
    }

private:
    SV *next() { return AvARRAY(texts_)[next_++]; }

    PerlInterpreter *perl_;
    AV *texts_ = nullptr;
    SV *error_ = nullptr;
    SSize_t next_ = 0;
};

/// From the words that VEL::Record uses.
ChangeKind kindOf(std::string_view word)
{
    constexpr std::pair<std::string_view, ChangeKind> kinds[] = {
        {"rename-parameter", ChangeKind::RenamedParameter},
        {"remove-parameter", ChangeKind::RemovedParameter},
        {"add-parameter", ChangeKind::AddedParameter},
        {"change-value", ChangeKind::ChangedValue},
        {"move-parameter", ChangeKind::MovedParameter},
        {"rename-object", ChangeKind::RenamedObject},
        {"remove-object", ChangeKind::RemovedObject},
        {"set-version", ChangeKind::SetVersion},
    };
    for (const auto &[name, kind] : kinds) {
        if (name == word) {
            return kind;
        }
    }
    return ChangeKind::Unknown;
}

/// The package in which the object's class finds a method. Null if there is no such method
/// or the value is not an object.
CV *findMethod(pTHX_ SV *object, const char *method)
{
    if (!SvROK(object) || !SvOBJECT(SvRV(object))) {
        return nullptr;
    }
    GV *found = gv_fetchmethod_autoload(SvSTASH(SvRV(object)), method, FALSE);
    return found != nullptr && isGV(found) ? GvCV(found) : nullptr;
}

} // namespace

std::string recordsMethod(const char *method)
{
    return std::string(method) + "Records";
}

bool hasRecords(pTHX_ SV *object, const char *method)
{
    const CV *texts = findMethod(aTHX_ object, method);
    const CV *records = findMethod(aTHX_ object, recordsMethod(method).c_str());
    return records != nullptr && ((texts == nullptr) || CvSTASH(texts) == CvSTASH(records));
}

SV *addRecords(pTHX_ AV *records, std::vector<Finding> *findings)
{
    RecordTexts texts(aTHX_ records, {"path", "identifier", "text", "@related"});
    while (!texts.atEnd()) {
        Finding &finding = findings->emplace_back();
        finding.path = texts.text();
        finding.identifier = texts.text();
        finding.text = texts.text();
        finding.related = texts.list();
    }
    return texts.error();
}

SV *addRecords(pTHX_ AV *records, std::vector<UpgradeChange> *changes)
{
    RecordTexts texts(aTHX_ records, {"kind", "path", "new_path", "old", "new", "text"});
    while (!texts.atEnd()) {
        UpgradeChange &change = changes->emplace_back();
        change.kind = kindOf(texts.text());
        change.path = texts.text();
        change.newPath = texts.text();
        change.oldValue = texts.text();
        change.newValue = texts.text();
        change.text = texts.text();
    }
    return texts.error();
}

SV *addRecords(pTHX_ AV *records, std::vector<RuleField> *fields)
{
    RecordTexts texts(aTHX_ records, {"name", "text", "tip"});
    while (!texts.atEnd()) {
        RuleField &field = fields->emplace_back();
        field.name = texts.text();
        field.text = texts.text();
        field.inTip = !texts.text().empty();
    }
    return texts.error();
}

} // namespace velparser
