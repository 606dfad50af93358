// Tests that the rows and the title follow every change of the document.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/Document.h"
#include "veleditor/tests/TreeText.h"

using namespace velEditor;

namespace {

const char duct[] = "/FLOW:Analysis/DOMAIN:Duct";

} // namespace

class VELTreeDocumentTest : public EditorTest
{
    Q_OBJECT

private:
    [[nodiscard]] Document &document() { return editor().document(); }
    /// The labels of the rows in the duct, separated by commas.
    QString labelsInDuct();

private slots:
    void showsAnotherValue();
    void showsANewParameterFirst();
    void putsAParameterBackInItsPlace();
    void leavesHiddenParametersOut();
    void showsObjectsThatComeAndGo();
    void showsItsMarkInTheTitle();
    void hasADocumentOfItsOwn();
};

QString VELTreeDocumentTest::labelsInDuct()
{
    QStringList labels;
    const VELTreeItem &object = row(duct);
    for (int i = 0; i < object.childCount(); ++i) {
        labels.append(object.child(i)->text(VELTreeItem::Name));
    }
    return labels.join(u',');
}

void VELTreeDocumentTest::showsAnotherValue()
{
    open(copyOf("duct.vel"));
    select("/FLOW:Analysis/DOMAIN:Duct/Kind"); // not the row that changes
    const std::string path = "/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind";
    QCOMPARE(document().apply(settingValue(path, "Wall")), std::nullopt);
    QCOMPARE(row(path.c_str()).value(), QString("Wall"));
    QCOMPARE(row("/FLOW:Analysis/DOMAIN:Duct/Kind").value(), QString("Fluid"));
    QCOMPARE(document().rollBack(), std::nullopt);
    QCOMPARE(row(path.c_str()).value(), QString("Inlet"));
}

void VELTreeDocumentTest::showsANewParameterFirst()
{
    open(copyOf("duct.vel"));
    const QString before = labelsInDuct();
    QCOMPARE(document().apply(addingParameter(std::string(duct) + "/Reviewer", "x")), std::nullopt);
    QCOMPARE(labelsInDuct(), "Reviewer," + before);
    QVERIFY(row("/FLOW:Analysis/DOMAIN:Duct/Reviewer").isEditable());
    QCOMPARE(document().rollBack(), std::nullopt);
    QCOMPARE(labelsInDuct(), before);
}

void VELTreeDocumentTest::putsAParameterBackInItsPlace()
{
    open(copyOf("duct.vel"));
    const QString before = treeText(tree());
    for (const char *name : {"Kind", "Location", "Reference Pressure"}) {
        QCOMPARE(document().apply(deletingParameter(std::string(duct) + "/" + name)), std::nullopt);
        QVERIFY(!labelsInDuct().contains(name));
        QCOMPARE(document().rollBack(), std::nullopt);
        QCOMPARE(treeText(tree()), before);
    }
}

// A trace level is an expert item.
void VELTreeDocumentTest::leavesHiddenParametersOut()
{
    open(copyOf("duct.vel"));
    const QString before = labelsInDuct();
    QVERIFY(!before.contains("Trace Level"));
    QCOMPARE(document().apply(deletingParameter(std::string(duct) + "/Trace Level")), std::nullopt);
    QCOMPARE(document().rollBack(), std::nullopt);
    QCOMPARE(labelsInDuct(), before);
}

void VELTreeDocumentTest::showsObjectsThatComeAndGo()
{
    open(copyOf("duct.vel"));
    const QString before = treeText(tree());
    const std::string in = std::string(duct) + "/BOUNDARY:in";
    QCOMPARE(document().apply(deletingObject(in)), std::nullopt);
    QVERIFY(!labelsInDuct().contains("BOUNDARY : in"));
    QCOMPARE(document().rollBack(), std::nullopt);
    QCOMPARE(treeText(tree()), before);
    QCOMPARE(document().apply(addingObject(in, "BOUNDARY: in\n  Kind = Wall\nEND\n")),
             std::nullopt);
    QCOMPARE(row("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind").value(), QString("Wall"));
}

void VELTreeDocumentTest::showsItsMarkInTheTitle()
{
    open(copyOf("duct.vel"));
    document().setModified();
    QVERIFY(tree().isModified());
    QCOMPARE(editor().windowTitle(), file() + " - Modified");
    editor().setWindowTitle("another");
    document().setModified(); // once more
    QCOMPARE(editor().windowTitle(), QString("another - Modified"));
    document().clearModified();
    QCOMPARE(editor().windowTitle(), QString("another"));
    QVERIFY(!tree().isModified());
}

void VELTreeDocumentTest::hasADocumentOfItsOwn()
{
    open(copyOf("duct.vel"));
    QWidget window;
    VELTree other(&window, QStringLiteral("Other"));
    QCOMPARE(treeText(other), treeText(tree()));
    other.setModified();
    QVERIFY(other.isModified());
    QVERIFY(!tree().isModified());
}

VEL_EDITOR_TEST(VELTreeDocumentTest)
#include "VELTreeDocument_test.moc"
