// Loads the Designer plugin as Qt Designer does and creates every component through it. The
// expected names are the package's component list, so a component missing from the plugin fails.
#include <QApplication>
#include <QPluginLoader>
#include <QSet>
#include <QTextStream>
#include <QWidget>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

#include <memory>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QTextStream err(stderr);
    int failures = 0;
    const auto check = [&](bool ok, const QString &what) {
        if (!ok) {
            err << "FAIL: " << what << '\n';
            ++failures;
        }
    };

    QPluginLoader loader(QStringLiteral(OLVEX_DESIGNER_PLUGIN));
    auto *collection = qobject_cast<QDesignerCustomWidgetCollectionInterface *>(loader.instance());
    if (!collection) {
        err << "FAIL: no widget collection in " << loader.fileName() << ": " << loader.errorString()
            << '\n';
        return 1;
    }

    QSet<QString> expected;
    for (const QString &name : QStringLiteral(OLVEX_COMPONENT_NAMES).split(u',')) {
        expected.insert(u"olvex::" + name);
    }
    QSet<QString> offered;
    QWidget parent;
    for (QDesignerCustomWidgetInterface *widget : collection->customWidgets()) {
        const QString name = widget->name();
        offered.insert(name);
        check(widget->group() == u"Olvex Settings", name + u": group " + widget->group());
        check(!widget->icon().isNull(), name + u": no icon");
        check(!widget->toolTip().isEmpty(), name + u": no tooltip");
        check(widget->domXml().contains(u"class=\"" + name + u'"'), name + u": domXml");
        check(!widget->includeFile().isEmpty(), name + u": no include file");
        std::unique_ptr<QWidget> created(widget->createWidget(&parent));
        check(created && QString::fromLatin1(created->metaObject()->className()) == name,
              name + u": createWidget made "
                  + (created ? QString::fromLatin1(created->metaObject()->className())
                             : QStringLiteral("nothing")));
    }
    for (const QString &name : expected - offered) {
        check(false, name + u" is not in the plugin");
    }
    for (const QString &name : offered - expected) {
        check(false, name + u" is in the plugin but not in the package's component list");
    }
    QTextStream(stdout) << offered.size() << " components, " << failures << " failures\n";
    return failures == 0 ? 0 : 1;
}
