#include <gtest/gtest.h>

#include "cli/pages/Pages.h"
#include "tests/pages/SmallTable.h"

namespace trevolt {
namespace {

TEST(ManualPage, HasCommandsOptionsAndFooters) {
    EXPECT_EQ(ManualPage(SmallTable()),
              R"text(.\" Made by ./dev pages of the program's own options.
.TH SOME\-PROG 1 "" Trevolt
.SH NAME
some\-prog \- does it all
.SH SYNOPSIS
\fBsome\-prog turn\fR [\fIOPTIONS\fR] \fISOURCE\fR... \fITARGET\fR
.br
\fBsome\-prog make\fR [\fIOPTIONS\fR] \fIFOLDER\fR
.br
\fBsome\-prog\fR \fB\-\-help\fR
.SH DESCRIPTION
\fBsome\-prog\fR turns the correction coefficients that a calibration run
measured, when cabinets are mounted turned or a whole screen is installed
rotated. It reads coefficient files, turns each of them clockwise as seen on
the screen, and writes it in its own kind under a name that says so. The files
read are never written to, outputs that exist are never replaced unasked, and
an output gets its name only when it is whole.
.SH OPTIONS
.TP
\fB\-h\fR, \fB\-\-help\fR
Print this help.
.SH COMMANDS
.SS some\-prog turn
Turn it.
.PP
\fBPlaces\fR
.TP
\fISOURCE\fR...
It\(aqs all [here].
.TP
\fITARGET\fR
There.
.PP
\fBTurn\fR
.TP
\fB\-a\fR, \fB\-\-angle\fR \fB90\fR|\fB180\fR
How: 90\[u00B0] or so. Default: 90.
.TP
\fB\-\-table\fR \fIFILE\fR
A \e and a ].
.PP
\fBReport\fR
.TP
\fB\-n\fR, \fB\-\-no\-go\fR
Don\(aqt.
.SS some\-prog make
Make it.
.PP
\fBPlaces\fR
.TP
\fIFOLDER\fR
Where.
.TP
\fB\-\-in\fR \fIFOLDER\fR
Beside. Default: here.
.PP
\fBWork\fR
.TP
\fB\-j\fR, \fB\-\-jobs\fR \fIN\fR
How many.
.SH FILES
The extension in the name of a coefficient file tells its kind: \fB.9fcoef\fR,
\fB.9bcoef\fR, \fB.9wcoef\fR, \fB.3wcoef\fR, \fB.3fcoef\fR, \fB.3bcoef\fR,
\fB.cccoef\fR, \fB.4wcoef\fR, \fB.12wcoef\fR.
.SH EXIT STATUS
.TP
\fB0\fR
done
.SH EXAMPLES
.SS some\-prog turn
.TP
\fBsome\-prog turn x\fR
\&.dotted \(aqtext\(aq
.SH SEE ALSO
.BR sha256sum (1)
)text");
}

TEST(ManualPage, EscapesWhatTroffTakesForItsOwn) {
    SCommandTable table = SmallTable();
    table.commands.clear();
    table.program.description = ".x \\n -y 'z' \"w\" `v` ^ ~ \u00D7";
    EXPECT_NE(ManualPage(table).find("\nsome\\-prog \\- .x \\en \\-y \\(aqz\\(aq \\(dqw\\(dq "
                                     "\\(gav\\(ga \\(ha \\(ti \\[u00D7]\n"),
              std::string::npos)
        << ManualPage(table);
}

} // namespace
} // namespace trevolt
