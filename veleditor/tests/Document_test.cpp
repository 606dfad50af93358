// Tests the document without a window: loading, edits and their signals, the mark of
// unsaved changes, validation and saving. Also compares a history of random edits
// with a model of the data that does not use the edits' texts.
#include "veleditor/src/Document.h"

#include "veleditor/tests/DataText.h"
#include "velparser/api/velparser.h"
#include "veltext/applyEdit.h"
#include "veltext/editRecord.h"
#include "veltext/fields.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

using namespace velEditor;

namespace {

// --- The model -------------------------------------------------------------------

class Model
{
public:
    explicit Model(Node root) : root_(std::move(root)) {}

    [[nodiscard]] const Node &root() const { return root_; }

    /// The paths of all parameters, or of all objects but the root.
    [[nodiscard]] std::vector<std::string> paths(bool parameters) const
    {
        return pathsBelow(root_, parameters);
    }

    void set(const std::string &path, const std::string &value) { at(path)->value = value; }

    void add(const std::string &parent, Node child)
    {
        Node *object = at(parent);
        const auto there = find(*object, child.component);
        if (there == object->children.end()) {
            object->children.push_back(std::move(child));
        } else {
            there->value = child.value;
        }
    }

    void remove(const std::string &path)
    {
        Node *object = at(parentPath(path));
        object->children.erase(find(*object, lastComponent(path)));
    }

    /// The node at a path; null for none.
    Node *at(const std::string &path)
    {
        Node *node = &root_;
        for (std::size_t start = 1; start < path.size() && node != nullptr;) {
            const std::size_t end = std::min(path.find('/', start), path.size());
            const auto child = find(*node, path.substr(start, end - start));
            node = child == node->children.end() ? nullptr : &*child;
            start = end + 1;
        }
        return node;
    }

private:
    static std::vector<Node>::iterator find(Node &object, const std::string &component)
    {
        return std::find_if(object.children.begin(), object.children.end(),
                            [&](const Node &child) { return child.component == component; });
    }

    Node root_;
};

/// Makes random edits of a document and of a model, and undoes and repeats any number
/// of them.
class History
{
public:
    History(Document &document, unsigned seed)
        : document_(document), random_(seed), model_(storedData())
    {
        QObject::connect(&document, &Document::applied, &document,
                         [this](const Edit &edit) { last_ = edit; });
    }

    /// Makes one step; false if the document refuses it.
    [[nodiscard]] bool step()
    {
        const unsigned kind = below(10);
        if (kind < 2) {
            return undo();
        }
        if (kind == 2) {
            return makeAgain();
        }
        return makeNew(kind);
    }

    [[nodiscard]] bool undo()
    {
        if (done_.empty()) {
            return true;
        }
        Done done = std::move(done_.back());
        done_.pop_back();
        if (document_.apply(inverse(done.edit))) {
            return false;
        }
        std::swap(done.other, model_);
        undone_.push_back(std::move(done));
        return true;
    }

    [[nodiscard]] bool canUndo() const { return !done_.empty(); }
    [[nodiscard]] const Model &model() const { return model_; }

private:
    /// An edit, and the model before it or, if the edit is undone, after it.
    struct Done
    {
        Edit edit;
        Model other;
    };

    bool makeAgain()
    {
        if (undone_.empty()) {
            return true;
        }
        Done done = std::move(undone_.back());
        undone_.pop_back();
        if (document_.apply(done.edit)) {
            return false;
        }
        std::swap(done.other, model_);
        done_.push_back(std::move(done));
        return true;
    }

    bool makeNew(unsigned kind)
    {
        Model before = model_;
        const std::optional<Edit> edit = kind < 5   ? set()
                                         : kind < 7 ? addParameter()
                                         : kind < 8 ? addObject()
                                         : kind < 9 ? remove(true)
                                                    : remove(false);
        if (!edit) {
            return true;
        }
        if (document_.apply(*edit)) {
            return false;
        }
        done_.push_back({last_, std::move(before)});
        undone_.clear();
        return true;
    }

    std::optional<Edit> set()
    {
        const std::optional<std::string> path = one(model_.paths(true));
        if (!path) {
            return std::nullopt;
        }
        static const std::vector<std::string> values{
            "two  blanks", "a\tb", "", "ends in \\", "\\# no comment", "\xC3\xA4", "= 3"};
        const std::string value = below(2) == 0 ? *one(values) : plainValue();
        model_.set(*path, value);
        return settingValue(*path, value);
    }

    std::optional<Edit> addParameter()
    {
        const std::string object = one(model_.paths(false)).value_or("/");
        const std::string name = "p " + std::to_string(below(8));
        const std::string value = plainValue();
        model_.add(object, {name, value, {}});
        return addingParameter(childPath(object, name), value);
    }

    std::optional<Edit> addObject()
    {
        const std::string object = below(4) == 0 ? "/" : one(model_.paths(false)).value_or("/");
        const std::string name = std::to_string(below(100));
        const bool isSingleton = below(4) == 0;
        const std::string component = isSingleton ? "EXPERT PARAMETERS" : "DOMAIN:d" + name;
        const std::string path = childPath(object, component);
        if (model_.at(path) != nullptr) {
            return std::nullopt;
        }
        const std::string value = plainValue();
        model_.add(object,
                   {component,
                    std::nullopt,
                    {{"BOUNDARY:b", std::nullopt, {{"Kind", value, {}}}}, {"Late", value, {}}}});
        return addingObject(path, (isSingleton ? component + ":" : "DOMAIN: d" + name) +
                                      "\nBOUNDARY : b\n  Kind=" + value + "\nEND\nLate = " + value +
                                      "\nEND");
    }

    std::optional<Edit> remove(bool parameter)
    {
        const std::optional<std::string> path = one(model_.paths(parameter));
        if (!path) {
            return std::nullopt;
        }
        model_.remove(*path);
        return parameter ? deletingParameter(*path) : deletingObject(*path);
    }

    std::string plainValue() { return "v" + std::to_string(below(1000)) + ", w [m s^-1]"; }

    std::optional<std::string> one(const std::vector<std::string> &texts)
    {
        if (texts.empty()) {
            return std::nullopt;
        }
        return texts[below(static_cast<unsigned>(texts.size()))];
    }

    unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }

    Document &document_;
    std::mt19937 random_;
    Model model_;
    Edit last_;
    std::vector<Done> done_;
    std::vector<Done> undone_;
};

/// The data at the start of each test.
const char start[] = "FLOW: Analysis\n"
                     "  Title = First run\n"
                     "  DOMAIN: Duct\n"
                     "    Kind = Fluid\n"
                     "    BOUNDARY: in\n"
                     "      Kind = Inlet\n"
                     "      Mass Flow Rate = 0.5\n"
                     "    END\n"
                     "    Location = B1, B2\n"
                     "  END\n"
                     "  Run Mode = Steady\n"
                     "END\n";

const char startDump[] = "FLOW:Analysis\n"
                         "  Title = First run\n"
                         "  DOMAIN:Duct\n"
                         "    Kind = Fluid\n"
                         "    BOUNDARY:in\n"
                         "      Kind = Inlet\n"
                         "      Mass Flow Rate = 0.5\n"
                         "    Location = B1, B2\n"
                         "  Run Mode = Steady\n";

} // namespace

class DocumentTest : public QObject
{
    Q_OBJECT

private:
    /// Loads a file with this content.
    void open(const QByteArray &content = start);
    /// The signals since the last call, one per line.
    std::string reports();
    [[nodiscard]] QString path(const char *name) const { return folder_->filePath(name); }

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<Document> document_;
    std::string reports_;

private slots:
    void initTestCase();
    void init();

    void keepsWhatItLoaded();
    void keepsNothingOfAPipe();
    void saysWhyItCannotLoad();

    void setsAValue();
    void addsAParameterAsAFileWould();
    void addsAParameterThatIsThere();
    void addsAnObject();
    void addsToAnObjectThatIsThere();
    void addsTheObjectsAroundAParameter();
    void addsTheObjectsAroundAnObject();
    void deletesAParameterAndPutsItBack();
    void deletesAnObjectAndPutsItBack();
    void findsAPlaceAmongOtherSiblings();
    void putsParametersBackInOrderAfterASave();
    void rollsBackTheLastEdit();
    void marksAFailedEdit();
    void marksNothingWhenToldSo();
    void takesRandomEditsBack_data();
    void takesRandomEditsBack();
    void editsHaveTheSameEffectElsewhere_data();
    void editsHaveTheSameEffectElsewhere();
    void keepsDeepObjects();

    void numbersItsStates();
    void reportsFindings();
    void savesToItsFile();
    void staysModifiedWhenItCannotBeSaved();
};

void DocumentTest::open(const QByteArray &content)
{
    QFile file(path("file.vel"));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write");
    }
    file.close();
    document_ = std::make_unique<Document>(file.fileName().toStdString());
    QCOMPARE(document_->load(), std::nullopt);

    const auto note = [this](const std::string &text) { reports_ += text + "\n"; };
    const auto atPlace = [](int position) { return " " + std::to_string(position); };
    connect(document_.get(), &Document::valueChanged, this,
            [note](const std::string &path, const std::string &value) {
                note("value " + path + " " + value);
            });
    connect(document_.get(), &Document::parameterAdded, this,
            [=](const std::string &path, int position) {
                note("parameter " + path + atPlace(position));
            });
    connect(
        document_.get(), &Document::objectAdded, this,
        [=](const std::string &path, int position) { note("object " + path + atPlace(position)); });
    connect(document_.get(), &Document::parameterRemoved, this,
            [note](const std::string &path) { note("no parameter " + path); });
    connect(document_.get(), &Document::objectRemoved, this,
            [note](const std::string &path) { note("no object " + path); });
    connect(document_.get(), &Document::reloaded, this, [note] { note("reloaded"); });
    connect(document_.get(), &Document::applied, this, [=](const Edit &edit) {
        note("applied " + edit.path + " [" + edit.oldText + "] [" + edit.newText + "]" +
             atPlace(edit.position));
    });
    connect(document_.get(), &Document::modifiedMarked, this,
            [note](bool modified) { note(modified ? "modified" : "unmodified"); });
    connect(document_.get(), &Document::validated, this,
            [note](const std::string &path, const Message &findings) {
                note("validated " + path + ": " + findings.value_or("-"));
            });
    reports_.clear();
}

std::string DocumentTest::reports()
{
    return std::exchange(reports_, {});
}

void DocumentTest::initTestCase()
{
    QCOMPARE(Document("").readLibraries(), std::nullopt);
}

void DocumentTest::init()
{
    forgetData();
    folder_ = std::make_unique<QTemporaryDir>();
}

// --- Loading ----------------------------------------------------------------------

void DocumentTest::keepsWhatItLoaded()
{
    open();
    QCOMPARE(document_->file(), path("file.vel").toStdString());
    QCOMPARE(document_->loadedText(), start);
    QVERIFY(document_->encoding() == TextEncoding::Utf8);
    QVERIFY(!document_->isModified());
    QCOMPARE(dump(storedData()), startDump);
    QVERIFY(document_->data().has("/FLOW:Analysis/DOMAIN:Duct"));
    QVERIFY(!document_->data().has("/FLOW:Analysis/DOMAIN:Room"));
    QCOMPARE(document_->data().value("/FLOW:Analysis/Title"), "First run");
    QCOMPARE(document_->data().value("/FLOW:Analysis/DOMAIN:Duct"), std::nullopt);

    open("FLOW: Analysis\n  Title = \xE4\nEND\n");
    QVERIFY(document_->encoding() == TextEncoding::Latin1);
}

// A pipe can be read only once: a second reader would wait for a writer forever.
void DocumentTest::keepsNothingOfAPipe()
{
    const std::string pipe = path("pipe").toStdString();
    QCOMPARE(::mkfifo(pipe.c_str(), 0600), 0);
    const unsigned limit = ::alarm(20); // ends a test that hangs
    std::thread writer([pipe] {
        QFile file(QString::fromStdString(pipe));
        if (file.open(QIODevice::WriteOnly)) {
            file.write("FLOW: Analysis\n  Title = \xE4\nEND\n");
        }
    });
    Document document(pipe);
    const Message failure = document.load();
    writer.join();
    ::alarm(limit);
    QCOMPARE(failure, std::nullopt);
    QCOMPARE(dump(storedData()), "FLOW:Analysis\n  Title = \xE4\n");
    QCOMPARE(document.loadedText(), "");
    QVERIFY(document.encoding() == TextEncoding::Utf8);
}

void DocumentTest::saysWhyItCannotLoad()
{
    Document document(path("absent").toStdString());
    int reloads = 0;
    connect(&document, &Document::reloaded, this, [&] { ++reloads; });
    const Message failure = document.load();
    QVERIFY(failure.has_value());
    QVERIFY2(QString::fromStdString(*failure).contains("absent"), failure->c_str());
    QCOMPARE(reloads, 0);
    QCOMPARE(document.loadedText(), "");
}

// --- Edits ------------------------------------------------------------------------

void DocumentTest::setsAValue()
{
    open();
    QCOMPARE(document_->apply(settingValue("/FLOW:Analysis/Title", "Second  run")), std::nullopt);
    QCOMPARE(document_->data().value("/FLOW:Analysis/Title"), "Second  run");
    QCOMPARE(reports(), "modified\n"
                        "value /FLOW:Analysis/Title Second  run\n"
                        "applied /FLOW:Analysis/Title [First run] [Second  run] -1\n");
}

void DocumentTest::addsAParameterAsAFileWould()
{
    open();
    QCOMPARE(
        document_->apply(addingParameter("/FLOW:Analysis/DOMAIN:Duct/Reviewer", " two  words ")),
        std::nullopt);
    QCOMPARE(reports(), "modified\n"
                        "parameter /FLOW:Analysis/DOMAIN:Duct/Reviewer -1\n"
                        "applied /FLOW:Analysis/DOMAIN:Duct/Reviewer [] [two words] 3\n");
    QCOMPARE(document_->apply(addingParameter("/Top", "1")), std::nullopt);
    QCOMPARE(document_->data().value("/Top"), "1");
    QCOMPARE(document_->rollBack(), std::nullopt);
    QCOMPARE(document_->data().value("/Top"), std::nullopt);
}

void DocumentTest::addsAParameterThatIsThere()
{
    open();
    QCOMPARE(document_->apply(addingParameter("/FLOW:Analysis/Title", "Second run")), std::nullopt);
    QCOMPARE(reports(), "modified\n"
                        "value /FLOW:Analysis/Title Second run\n"
                        "applied /FLOW:Analysis/Title [First run] [Second run] -1\n");
    QCOMPARE(document_->rollBack(), std::nullopt);
    QCOMPARE(dump(storedData()), startDump);
}

void DocumentTest::addsAnObject()
{
    open();
    QCOMPARE(document_->apply(addingObject("/FLOW:Analysis/EXPERT PARAMETERS",
                                           "EXPERT PARAMETERS:\n  a = 1  # note\nEND\n")),
             std::nullopt);
    QCOMPARE(reports(), "modified\n"
                        "object /FLOW:Analysis/EXPERT PARAMETERS -1\n"
                        "applied /FLOW:Analysis/EXPERT PARAMETERS [] "
                        "[EXPERT PARAMETERS :\na = 1\nEND\n] 3\n");
    QCOMPARE(dump(storedData()), std::string(startDump) + "  EXPERT PARAMETERS\n    a = 1\n");
    QCOMPARE(document_->rollBack(), std::nullopt);
    QCOMPARE(dump(storedData()), startDump);
}

void DocumentTest::addsToAnObjectThatIsThere()
{
    open();
    const std::string duct = "/FLOW:Analysis/DOMAIN:Duct";
    QCOMPARE(document_->apply(addingObject(duct, "DOMAIN: Duct\nEND\n")), std::nullopt);
    QCOMPARE(QString::fromStdString(reports()).section('\n', 0, 1).section(' ', 0, 1),
             QString("modified\napplied /FLOW:Analysis/DOMAIN:Duct")); // there is nothing to show
    QCOMPARE(
        document_->apply(addingObject(duct, "DOMAIN: Duct\nKind = Solid\nReviewer = x\nEND\n")),
        std::nullopt);
    QVERIFY(QString::fromStdString(reports()).startsWith("modified\nreloaded\napplied"));
    QCOMPARE(document_->data().value(duct + "/Kind"), "Solid");
    QCOMPARE(document_->rollBack(), std::nullopt);
    QVERIFY(QString::fromStdString(reports()).startsWith("modified\nreloaded\napplied"));
    QCOMPARE(dump(storedData()), startDump);
}

void DocumentTest::addsTheObjectsAroundAParameter()
{
    open();
    const std::string zone = "/FLOW:Analysis/ZONE:a";
    QCOMPARE(document_->apply(addingParameter(zone + "/PART/Size", "2")), std::nullopt);
    QCOMPARE(reports(), "modified\nobject " + zone + " -1\napplied " + zone +
                            " [] [ZONE : a\nPART :\nSize = 2\nEND\nEND\n] 3\n");
    QCOMPARE(document_->rollBack(), std::nullopt);
    QCOMPARE(dump(storedData()), startDump);
    QVERIFY(!document_->data().has(zone));
}

void DocumentTest::addsTheObjectsAroundAnObject()
{
    open();
    QCOMPARE(document_->apply(addingObject("/FLOW:Analysis/ZONE:a/PART", "PART:\nSize = 2\nEND\n")),
             std::nullopt);
    QCOMPARE(reports(), "modified\nobject /FLOW:Analysis/ZONE:a -1\n"
                        "applied /FLOW:Analysis/ZONE:a [] "
                        "[ZONE : a\nPART :\nSize = 2\nEND\nEND\n] 3\n");
    QCOMPARE(document_->rollBack(), std::nullopt);
    QCOMPARE(dump(storedData()), startDump);
}

void DocumentTest::deletesAParameterAndPutsItBack()
{
    open();
    const std::string kind = "/FLOW:Analysis/DOMAIN:Duct/Kind";
    QCOMPARE(document_->apply(deletingParameter(kind)), std::nullopt);
    QCOMPARE(document_->data().value(kind), std::nullopt);
    QCOMPARE(reports(), "modified\nno parameter " + kind + "\napplied " + kind + " [Fluid] [] 0\n");
    QCOMPARE(document_->rollBack(), std::nullopt);
    QCOMPARE(dump(storedData()), startDump);
    QCOMPARE(reports(), "modified\nparameter " + kind + " 0\napplied " + kind + " [] [Fluid] 0\n");
}

void DocumentTest::deletesAnObjectAndPutsItBack()
{
    open();
    const std::string in = "/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in";
    const std::string block = "BOUNDARY : in\nKind = Inlet\nMass Flow Rate = 0.5\nEND\n";
    QCOMPARE(document_->apply(deletingObject(in)), std::nullopt);
    QVERIFY(!document_->data().has(in));
    QCOMPARE(reports(),
             "modified\nno object " + in + "\napplied " + in + " [" + block + "] [] 1\n");
    QCOMPARE(document_->rollBack(), std::nullopt);
    QCOMPARE(dump(storedData()), startDump);
    QCOMPARE(reports(), "modified\nobject " + in + " 1\napplied " + in + " [] [" + block + "] 1\n");
}

void DocumentTest::findsAPlaceAmongOtherSiblings()
{
    const auto placeOf = [](Edit::Kind kind, int position, int parametersBefore,
                            const std::vector<bool> &siblings) {
        Edit edit{kind, "/A", {}, {}, position};
        edit.parametersBefore = parametersBefore;
        return positionAmong(siblings, edit);
    };
    const auto parameter = Edit::Kind::AddParameter;
    const auto object = Edit::Kind::AddObject;
    // As it was.
    QCOMPARE(placeOf(parameter, 1, 0, {false, true}), 1);
    QCOMPARE(placeOf(object, 2, 1, {true, false, true}), 2);
    QCOMPARE(placeOf(object, 2, 2, {true, true}), 2);
    QCOMPARE(placeOf(parameter, 2, Edit::unknown, {false, true, false}), 2);
    // All parameters are before all objects now.
    QCOMPARE(placeOf(parameter, 1, 0, {true, false}), 0);
    QCOMPARE(placeOf(parameter, 2, 1, {true, true, false}), 1);
    QCOMPARE(placeOf(parameter, 4, 2, {true, true, true, false, false}), 2);
    QCOMPARE(placeOf(object, 2, 1, {true, true, false, false}), 3);
    // There are fewer than there were.
    QCOMPARE(placeOf(parameter, 5, 3, {true, false}), 1);
    QCOMPARE(placeOf(object, 5, 1, {true, false}), 2);
    QCOMPARE(placeOf(object, 5, 1, {}), 0);
}

void DocumentTest::putsParametersBackInOrderAfterASave()
{
    const char mixed[] = "FLOW: A\n  DOMAIN: D\n  END\n  a = 1\n  b = 2\n  c = 3\nEND\n";
    for (const std::string name : {"a", "b", "c"}) {
        forgetData();
        open(mixed);
        const std::vector<std::string> lines = writtenLines();
        Edit deleted;
        connect(document_.get(), &Document::applied, this,
                [&deleted](const Edit &edit) { deleted = edit; });
        QCOMPARE(document_->apply(deletingParameter("/FLOW:A/" + name)), std::nullopt);
        QVERIFY(document_->save(document_->file()).outcome == SaveOutcome::Written);
        forgetData();
        QCOMPARE(document_->load(), std::nullopt);
        QCOMPARE(document_->apply(inverse(Edit(deleted))), std::nullopt);
        QCOMPARE(writtenLines(), lines);
    }
}

void DocumentTest::rollsBackTheLastEdit()
{
    open();
    QCOMPARE(document_->rollBack(), std::nullopt);
    QVERIFY(!document_->isModified());
    static_cast<void>(document_->apply(settingValue("/FLOW:Analysis/Title", "a")));
    static_cast<void>(document_->apply(settingValue("/FLOW:Analysis/Title", "b")));
    QCOMPARE(document_->rollBack(), std::nullopt);
    QCOMPARE(document_->data().value("/FLOW:Analysis/Title"), "a");
    QCOMPARE(document_->rollBack(), std::nullopt); // only the last one
    QCOMPARE(document_->data().value("/FLOW:Analysis/Title"), "a");
    QVERIFY(document_->isModified());
}

void DocumentTest::marksAFailedEdit()
{
    open();
    QCOMPARE(document_->apply(settingValue("/FLOW:Analysis/Absent", "1")),
             "setStringValue: requested object does not exist");
    QCOMPARE(document_->apply(deletingParameter("/FLOW:Analysis/Absent")),
             "deleteParamH: unable to find parameter");
    QCOMPARE(document_->apply(deletingObject("/FLOW:Absent")),
             "deleteObjH: unable to find parameter");
    QVERIFY(document_->apply(addingParameter("/FLOW:Analysis/1st", "1")).has_value());
    QVERIFY(document_->apply(addingObject("/FLOW:b", "FLOW: b\nEND\nEND\n")).has_value());
    QCOMPARE(reports(), "modified\nmodified\nmodified\nmodified\nmodified\n");
    QVERIFY(document_->isModified());
}

void DocumentTest::marksNothingWhenToldSo()
{
    open();
    const auto none = Document::Marking::None;
    QCOMPARE(document_->apply(settingValue("/FLOW:Analysis/Title", "a"), none), std::nullopt);
    QVERIFY(!document_->isModified());
    document_->setModified();
    QCOMPARE(document_->apply(settingValue("/FLOW:Analysis/Title", "b"), none), std::nullopt);
    QVERIFY(document_->isModified());
}

void DocumentTest::takesRandomEditsBack_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 12; ++seed) {
        QTest::addRow("%u", seed) << seed;
    }
}

void DocumentTest::takesRandomEditsBack()
{
    QFETCH(unsigned, seed);
    open();
    const std::vector<std::string> writtenFirst = writtenLines();
    History history(*document_, seed);
    for (int step = 0; step < 300; ++step) {
        QVERIFY(history.step());
        QCOMPARE(dump(storedData()), dump(history.model().root()));
        if (step % 10 == 0) {
            QCOMPARE(dump(asSaved(savedData())), dump(asSaved(history.model().root())));
        }
    }
    while (history.canUndo()) {
        QVERIFY(history.undo());
        QCOMPARE(dump(storedData()), dump(history.model().root()));
    }
    QCOMPARE(dump(storedData()), startDump);
    QCOMPARE(writtenLines(), writtenFirst);
}

void DocumentTest::editsHaveTheSameEffectElsewhere_data()
{
    takesRandomEditsBack_data();
}

// The edits of this document, as bytes, in a database that no document has.
void DocumentTest::editsHaveTheSameEffectElsewhere()
{
    QFETCH(unsigned, seed);
    open();
    std::vector<std::string> lines;
    for (const QByteArray &line : QByteArray(start).split('\n')) {
        lines.push_back(line.toStdString());
    }
    velparser::Session other = freshLoad(lines);
    QCOMPARE(dump(storedData(other)), dump(storedData()));
    connect(document_.get(), &Document::applied, document_.get(), [&](const Edit &edit) {
        std::string bytes;
        veltext::putEdit(&bytes, edit);
        veltext::FieldReader fields(bytes);
        veltext::applyEdit(velparser::findLiteHandle(other), veltext::takeEdit(&fields));
    });
    History history(*document_, seed);
    for (int step = 0; step < 300; ++step) {
        QVERIFY(history.step());
        QCOMPARE(dump(storedData(other)), dump(storedData()));
    }
}

void DocumentTest::keepsDeepObjects()
{
    constexpr int depth = 3000;
    QByteArray text;
    for (int i = 0; i < depth; ++i) {
        text += "D: d\n";
    }
    text += "x = 1\n" + QByteArray("END\n").repeated(depth);
    open(text);
    const std::vector<std::string> before = writtenLines();
    QCOMPARE(document_->apply(deletingObject("/D:d")), std::nullopt);
    QCOMPARE(writtenLines().size(), std::size_t{0});
    QCOMPARE(document_->rollBack(), std::nullopt);
    QCOMPARE(writtenLines(), before);
}

// --- States, validation, saving ---------------------------------------------------

void DocumentTest::numbersItsStates()
{
    open();
    const std::uint64_t loaded = document_->revision();
    static_cast<void>(document_->apply(settingValue("/FLOW:Analysis/Title", "a")));
    const std::uint64_t edited = document_->revision();
    QVERIFY(edited != loaded);
    QVERIFY(document_->isModified());
    document_->clearModified();
    QVERIFY(!document_->isModified());
    QCOMPARE(document_->revision(), edited);
    document_->setModified();
    QVERIFY(document_->isModified());
    QVERIFY(document_->revision() != edited && document_->revision() != loaded);
}

void DocumentTest::reportsFindings()
{
    open();
    const std::string in = "/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in";
    QCOMPARE(document_->validateObject(in), std::nullopt);
    QCOMPARE(reports(), "validated " + in + ": -\n");
    static_cast<void>(document_->apply(settingValue(in + "/Kind", "Elsewhere")));
    reports();
    const Message ofParameter = document_->validateParameter(in + "/Kind");
    QVERIFY(ofParameter.has_value());
    QVERIFY2(QString::fromStdString(*ofParameter).contains("Elsewhere"), ofParameter->c_str());
    QCOMPARE(reports(), "validated " + in + "/Kind: " + *ofParameter + "\n");
    const Message ofAll = document_->validate();
    QVERIFY(ofAll.has_value());
    QCOMPARE(reports(), "validated /: " + *ofAll + "\n");
}

void DocumentTest::savesToItsFile()
{
    open();
    static_cast<void>(document_->apply(settingValue("/FLOW:Analysis/Title", "Second run")));
    reports();
    QVERIFY(document_->save(document_->file()).outcome == SaveOutcome::Written);
    QCOMPARE(reports(), "unmodified\n");
    QVERIFY(!document_->isModified());
    QFile written(path("file.vel"));
    QVERIFY(written.open(QIODevice::ReadOnly));
    QVERIFY(written.readAll().startsWith("FLOW: Analysis\n  Title = Second run\n"));
    QFile backup(path("file.vel.bak"));
    QVERIFY(backup.open(QIODevice::ReadOnly));
    QCOMPARE(backup.readAll(), QByteArray(start));
}

void DocumentTest::staysModifiedWhenItCannotBeSaved()
{
    open();
    document_->setModified();
    const SaveResult result = document_->save(path("absent/file.vel").toStdString());
    QVERIFY(result.outcome == SaveOutcome::NotOpened);
    QVERIFY(document_->isModified());
}

QTEST_GUILESS_MAIN(DocumentTest)
#include "Document_test.moc"
