#include "dialogs/ZelWTResultList.h"

#include "ovdb/ovut.h"
#include "ovdb/resbuf.h"

#include <string>

resbuf* ZelBuildWTResultList(const std::array<QString, 5>& elements) {
    std::array<std::wstring, 5> texts;
    for (std::size_t i = 0; i < texts.size(); ++i)
        texts[i] = elements[i].toStdWString();
    return ovutBuildList(RTSTR, texts[0].c_str(), RTSTR, texts[1].c_str(), RTSTR, texts[2].c_str(),
                         RTSTR, texts[3].c_str(), RTSTR, texts[4].c_str(), 0);
}
