#include "fieldbook/Program.h"

#include "console/Program.h"
#include "fieldbook/commands/Commands.h"

namespace fieldbook {
namespace {

constexpr unsigned kEverywhere = Bit(Option::Data) | Bit(Option::Lang) | Bit(Option::Help) |
                                 Bit(Option::Version) | Bit(Option::Verbose);
constexpr unsigned kFileOptions = Bit(Option::From) | Bit(Option::Columns) | Bit(Option::Progress);
constexpr unsigned kLengthOptions = kFileOptions | Bit(Option::To) | Bit(Option::Decimals) |
                                    Bit(Option::Denominator) | Bit(Option::Reduced);

const Command kCommands[] = {
    {KTEXT("show"), ShowCommand, kShowHelp,
     kEverywhere | kLengthOptions | Bit(Option::Csv) | Bit(Option::Points) | Bit(Option::Sort) |
         Bit(Option::Within) | Bit(Option::Limit)},
    {KTEXT("angle"), AngleCommand, kAngleHelp,
     kEverywhere | Bit(Option::From) | Bit(Option::To) | Bit(Option::Decimals) | Bit(Option::Lat) |
         Bit(Option::Lon)},
    {KTEXT("inverse"), InverseCommand, kInverseHelp,
     kEverywhere | kLengthOptions | Bit(Option::Bearing)},
    {KTEXT("polar"), PolarCommand, kPolarHelp, kEverywhere | kLengthOptions | Bit(Option::Csv)},
    {KTEXT("area"), AreaCommand, kAreaHelp, kEverywhere | kLengthOptions},
    {KTEXT("check"), CheckCommand, kCheckHelp,
     kEverywhere | kFileOptions | Bit(Option::Tolerance) | Bit(Option::Limit)},
    {KTEXT("tolerance"), ToleranceCommand, kToleranceHelp, kEverywhere},
    {KTEXT("recent"), RecentCommand, kRecentHelp, kEverywhere},
    {KTEXT("plot"), PlotCommand, kPlotHelp, kEverywhere | kFileOptions | Bit(Option::Output)},
    {KTEXT("send"), SendCommand, kSendHelp,
     kEverywhere | Bit(Option::Field) | Bit(Option::Progress)},
    {KTEXT("units"), UnitsCommand, kUnitsHelp, kEverywhere},
    {KTEXT("service"), ServiceCommand, kServiceHelp, kEverywhere},
    {KTEXT("edit"), EditCommand, kEditHelp, kEverywhere | kFileOptions | Bit(Option::NoBackup)},
    {KTEXT("system"), SystemCommand, kSystemHelp, kEverywhere},
};

const WChar* const kGeneralHelp = KTEXT(
    "Usage: fieldbook COMMAND ... [--data DIR] [--lang LANGUAGE] [--verbose]\n"
    "\n"
    "Reads survey points and angles, shows them in the unit that you ask for, and\n"
    "changes points files.\n"
    "\n"
    "  fieldbook show FILE...          the points of files as tables\n"
    "  fieldbook angle VALUE...        angles from one notation into another\n"
    "  fieldbook inverse FILE FROM TO  distance and direction between points\n"
    "  fieldbook polar FILE FROM DIRECTION DISTANCE\n"
    "                                  the point that lies there\n"
    "  fieldbook area FILE P1 P2 P3... the area within points\n"
    "  fieldbook plot FILE -o MAP.svg  the points as a drawing\n"
    "  fieldbook check FILE...         names that come twice, points too near\n"
    "  fieldbook tolerance [LENGTH]    how near is too near\n"
    "  fieldbook send FILE URL         sends a file to a server\n"
    "  fieldbook recent                the points files that were read last\n"
    "  fieldbook units                 the settings of units\n"
    "  fieldbook units set KEY VALUE   changes one, for good\n"
    "  fieldbook edit FILE             changes a file by commands, with undo\n"
    "  fieldbook service ...           a service that copies points files\n"
    "  fieldbook system                what fieldbook sees of this machine\n"
    "\n"
    "  fieldbook help COMMAND          what the command takes, with all options\n"
    "  fieldbook --version             the version of the program\n"
    "  --data DIR                      folder of the settings, instead of fieldbook\n"
    "                                  in your application data\n"
    "  --lang LANGUAGE                 texts in another language than that of the\n"
    "                                  environment: en, it, or a gettext catalogue\n"
    "                                  (.po or .mo)\n"
    "  --verbose                       the local time of the run on standard error\n"
    "\n"
    "Options may stand anywhere; behind -- nothing is an option. A points file has\n"
    "rows of point, easting, northing, elevation and description; where one is only\n"
    "read, http://... or https://... stands for what a server has.\n"
    "\n"
    "Exit status: 0 done, 1 not done, 2 done but for some rows, values\n"
    "or commands.\n"
    "\n"
    "Examples:\n"
    "  fieldbook units set dist-units us-ft num-coord-dec 2\n"
    "  fieldbook show survey.csv --from us-ft --to m\n"
    "  fieldbook angle -10.5 --from deg --to dms\n"
    "  fieldbook inverse survey.csv T1 T2\n");

}  // namespace

int Run(const std::vector<Argument>& arguments, Console& console) {
  return console::Run({FIELDBOOK_VERSION, kGeneralHelp, kCommands}, arguments, console);
}

}  // namespace fieldbook
