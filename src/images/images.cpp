#include "images_p.h"

#include <QtCore/QDir>

void initKestrelImages()
{
    Q_INIT_RESOURCE(kestrel);
}
