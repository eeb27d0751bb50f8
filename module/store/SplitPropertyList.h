#pragma once

#include <QString>

#include <vector>

// Takes apart the stored list of user property names: comma-separated, a name holding a
// comma in double quotes. Always yields exactly 20 entries; missing ones are empty and
// anything after the twentieth is dropped.
__attribute__((visibility("default"))) void SplitPropertyList(QString line,
                                                              std::vector<QString>& names);
