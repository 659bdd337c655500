#include "views/MdiArea.h"

#include <QBrush>
#include <QImage>

MdiArea::MdiArea(QWidget* parent)
    : QMdiArea(parent)
{
    setBackground(QBrush(QImage(":/images/logo_hallmere-700x372.png")));
}
