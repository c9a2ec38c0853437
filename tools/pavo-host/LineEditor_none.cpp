#include "tools/pavo-host/LineEditor.h"

std::unique_ptr<LineEditor> LineEditor::make(const char* /*prompt*/, Complete /*complete*/)
{
    return nullptr;
}
