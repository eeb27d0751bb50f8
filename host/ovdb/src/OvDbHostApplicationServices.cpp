#include "ovdb/OvDbHostApplicationServices.h"

OvDbHostApplicationServices::OvDbHostApplicationServices()
    : m_productRoot(QStringLiteral("Orvex/R26")) {}

OvDbHostApplicationServices* OvDbHostApplicationServices::getRefPtr() {
    static OvDbHostApplicationServices services;
    return &services;
}
