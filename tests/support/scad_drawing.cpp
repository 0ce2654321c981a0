#include "support/scad_drawing.h"

namespace kelvorig::test {

std::string ScadDrawingTail(const std::string& marker)
{
    return "];\n"
           "\n"
           "scale([1000, 1000, 1000])\n"
           "\tconstellation();\n"
           "\n"
           "module constellation() {\n"
           "\tfor(s = sensors)\n"
           "\t\ttranslate(s[1])\n"
           "\t\t\trotate(s[2], s[3])\n"
           "\t\t\t\tsensor(s[0]);\n"
           "}\n"
           "\n"
           "module sensor(spec) {\n"
           "\tcolor(spec[1])\n" +
           marker + "}\n";
}

} // namespace kelvorig::test
