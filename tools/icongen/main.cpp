// icongen: paints every image of the viewer and writes them as PNG files into the given directory.
// Run it with QT_QPA_PLATFORM=offscreen; the logos need fonts, hence a QGuiApplication.
//   icongen OUTPUT_DIRECTORY          writes every image
//   icongen --preview PREFIX          writes contact sheets PREFIX-light/-dark/-logos.png to judge them
#include "ImageCatalogue.h"
#include "PreviewSheet.h"

#include <QGuiApplication>
#include <QTextStream>

namespace {

int writeImages(const QString &directory)
{
    QString errorMessage;
    if (!ImageCatalogue::writeAll(directory, errorMessage)) {
        QTextStream(stderr) << "icongen: " << errorMessage << '\n';
        return 1;
    }
    QTextStream(stdout) << "icongen: wrote " << ImageCatalogue::all().size() << " images to " << directory << '\n';
    return 0;
}

int writePreview(const QString &prefix)
{
    if (!PreviewSheet::writeAll(prefix)) {
        QTextStream(stderr) << "icongen: cannot write the preview sheets " << prefix << "-*.png\n";
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() == 2 && !arguments.at(1).startsWith(QLatin1Char('-')))
        return writeImages(arguments.at(1));
    if (arguments.size() == 3 && arguments.at(1) == QLatin1String("--preview"))
        return writePreview(arguments.at(2));
    QTextStream(stderr) << "usage: icongen OUTPUT_DIRECTORY\n       icongen --preview PREFIX\n";
    return 2;
}
