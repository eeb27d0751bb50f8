#include "shell/ResourceOverride.h"

#include "shell/ZelModuleState.h"

#include "platform/Resources.h"

ResourceOverride::ResourceOverride()
    : m_previous(platform::setCurrentResourceHandle(moduleResource)) {}

ResourceOverride::~ResourceOverride() {
    platform::setCurrentResourceHandle(m_previous);
}
