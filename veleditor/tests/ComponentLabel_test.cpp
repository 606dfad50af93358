// Tests the labels of objects: made from components, and the way back.
#include "veleditor/src/ComponentLabel.h"

#include <QTest>

using namespace velEditor;

class ComponentLabelTest : public QObject
{
    Q_OBJECT

private slots:
    void labelsAnObject_data();
    void labelsAnObject();
    void findsNoNameInATypeAlone();
};

void ComponentLabelTest::labelsAnObject_data()
{
    QTest::addColumn<QString>("component");
    QTest::addColumn<QString>("label");
    QTest::newRow("object") << "DOMAIN:Duct"
                            << "DOMAIN : Duct";
    QTest::newRow("singleton") << "FLOW"
                               << "FLOW :";
    QTest::newRow("blanks") << "EXPERT PARAMETERS"
                            << "EXPERT PARAMETERS :";
    QTest::newRow("colon in the name") << "DOMAIN:a:b"
                                       << "DOMAIN : a:b";
    QTest::newRow("label in the name") << "DOMAIN:a : b"
                                       << "DOMAIN : a : b";
}

void ComponentLabelTest::labelsAnObject()
{
    QFETCH(const QString, component);
    QFETCH(const QString, label);
    QCOMPARE(QString::fromStdString(labelOf(component.toStdString())), label);
    QCOMPARE(QString::fromStdString(componentOfLabel(label.toStdString())), component);
}

void ComponentLabelTest::findsNoNameInATypeAlone()
{
    QCOMPARE(componentOfLabel("FLOW"), std::string("FLOW"));
    QCOMPARE(componentOfLabel(""), std::string());
}

QTEST_APPLESS_MAIN(ComponentLabelTest)

#include "ComponentLabel_test.moc"
