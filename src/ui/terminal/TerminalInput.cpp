// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalInput.h"

#include "ui/terminal/PipeLineReader.h"
#include "ui/terminal/TerminalLineEditor.h"
#include "ui/terminal/TerminalOutput.h"

#include <unistd.h>

namespace bram
{

std::unique_ptr<LineSource> makeLineSource(int inputDescriptor, TerminalOutput &output)
{
    if (isatty(inputDescriptor) != 1) {
        return std::make_unique<PipeLineReader>(inputDescriptor);
    }
    const QByteArray kind = qgetenv("TERM");
    if (output.isTerminal() && !kind.isEmpty() && kind != "dumb") {
        return std::make_unique<TerminalLineEditor>(inputDescriptor, output);
    }
    return std::make_unique<PipeLineReader>(inputDescriptor,
                                            PipeLineReader::LineStart::AtPreviousEnd);
}

} // namespace bram
