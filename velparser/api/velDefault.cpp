// The forms of the calls that work on the default session.
#include "velparser/api/velparser.h"

namespace velparser {

velHandle *findLiteHandle()
{
    return findLiteHandle(defaultSession());
}

const char *readVELLibraries()
{
    return readVELLibraries(defaultSession());
}

const char *readLibraries(std::vector<Finding> *faults)
{
    return readLibraries(defaultSession(), faults);
}

const char *loadVELFromFile(const char *file, const char *type)
{
    return loadVELFromFile(defaultSession(), file, type);
}

const char *loadVELData(const char *const *lines, std::int32_t count)
{
    return loadVELData(defaultSession(), lines, count);
}

const char *updateSolverVEL()
{
    return updateSolverVEL(defaultSession());
}

const char *upgrade(std::vector<UpgradeChange> *changes)
{
    return upgrade(defaultSession(), changes);
}

const char *validateVELDataH()
{
    return validateVELDataH(defaultSession());
}

const char *validateVELObjectH(const char *path)
{
    return validateVELObjectH(defaultSession(), path);
}

const char *validateParameter(const char *path)
{
    return validateParameter(defaultSession(), path);
}

const char *validate(const char *path, std::vector<Finding> *findings)
{
    return validate(defaultSession(), path, findings);
}

const char *validateParameter(const char *path, std::vector<Finding> *findings)
{
    return validateParameter(defaultSession(), path, findings);
}

const char *setUnitsChecking(int on)
{
    return setUnitsChecking(defaultSession(), on);
}

const char *setBoundsChecking(int on)
{
    return setBoundsChecking(defaultSession(), on);
}

const char *setValidationLevelH(unsigned level)
{
    return setValidationLevelH(defaultSession(), level);
}

const char *getStringValue(const char *path, std::optional<std::string> *value)
{
    return getStringValue(defaultSession(), path, value);
}

const char *setStringValue(const char *path, const char *value)
{
    return setStringValue(defaultSession(), path, value);
}

const char *deleteParam(const char *path)
{
    return deleteParam(defaultSession(), path);
}

const char *deleteObj(const char *path)
{
    return deleteObj(defaultSession(), path);
}

const char *createObject(const char *path)
{
    return createObject(defaultSession(), path);
}

const char *createParam(const char *path, const char *value)
{
    return createParam(defaultSession(), path, value);
}

const char *placeChild(const char *path, std::uint32_t position)
{
    return placeChild(defaultSession(), path, position);
}

const char *pushPathH(const char *path)
{
    return pushPathH(defaultSession(), path);
}

const char *popPathH()
{
    return popPathH(defaultSession());
}

const char *getChildList(const char *path, std::vector<velChildInfo> *children,
                         std::vector<velGroupInfo> *groups)
{
    return getChildList(defaultSession(), path, children, groups);
}

const char *getFormattedVEL(const char *path, std::int32_t lineLength, velStringList *lines)
{
    return getFormattedVEL(defaultSession(), path, lineLength, lines);
}

int isVELLibrary(const char *path)
{
    return isVELLibrary(defaultSession(), path);
}

int isParamEditable(const char *path)
{
    return isParamEditable(defaultSession(), path);
}

int isItemExpert(const char *path)
{
    return isItemExpert(defaultSession(), path);
}

const char *getAllowedParamStrings(const char *path, velStringList *values)
{
    return getAllowedParamStrings(defaultSession(), path, values);
}

const char *explainItem(const char *path, std::vector<RuleField> *fields)
{
    return explainItem(defaultSession(), path, fields);
}

const char *getAllowedParams(const char *path, velStringList *names, int flag)
{
    return getAllowedParams(defaultSession(), path, names, flag);
}

const char *runPerlScript(const std::string &script, const std::vector<std::string> &arguments,
                          int *status)
{
    return runPerlScript(defaultSession(), script, arguments, status);
}

const char *runPerlScript(const std::string &script, const std::vector<std::string> &arguments,
                          const ScriptVariables &variables, int *status)
{
    return runPerlScript(defaultSession(), script, arguments, variables, status);
}

} // namespace velparser
