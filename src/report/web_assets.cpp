#include "report/web_assets.h"

#include <cstddef>

// The build names the files; the assembler copies each one whole between two labels.
#define KELVORIG_EMBED(name, path)                                                                                     \
    asm(".pushsection .rodata\n"                                                                                       \
        ".balign 16\n"                                                                                                 \
        ".global " #name "Begin\n" #name "Begin:\n"                                                                    \
        ".incbin \"" path "\"\n"                                                                                       \
        ".global " #name "End\n" #name "End:\n"                                                                        \
        ".popsection\n");                                                                                              \
    extern "C" const char name##Begin[];                                                                               \
    extern "C" const char name##End[]

KELVORIG_EMBED(kelvorigThreeJs, KELVORIG_THREE_JS);
KELVORIG_EMBED(kelvorigOrbitControls, KELVORIG_ORBIT_CONTROLS_JS);
KELVORIG_EMBED(kelvorigReportPage, KELVORIG_REPORT_PAGE_JS);

namespace kelvorig {
namespace {

std::string_view Between(const char* begin, const char* end)
{
    return std::string_view(begin, static_cast<size_t>(end - begin));
}

} // namespace

std::string_view ThreeJsSource()
{
    return Between(kelvorigThreeJsBegin, kelvorigThreeJsEnd);
}

std::string_view OrbitControlsSource()
{
    return Between(kelvorigOrbitControlsBegin, kelvorigOrbitControlsEnd);
}

std::string_view ReportPageScript()
{
    return Between(kelvorigReportPageBegin, kelvorigReportPageEnd);
}

} // namespace kelvorig
