#!/bin/sh
# Runs a command while a CUPS server of its own has two queues: "plotter", the default one, with A4,
# A3 and Letter, which prints to a file, and "other". Socket, settings and everything that is printed
# are in a folder that goes with the run.
#   with_cups.sh COMMAND...
# The command finds the server by CUPS_SERVER, and the user's settings by HOME; CUPS_PROCESS is the
# server's number, for a test that stops it.
set -eu
folder=$(mktemp -d)
server=
end() {
  [ -z "$server" ] || kill "$server" 2>/dev/null || true
  [ -z "$server" ] || wait "$server" 2>/dev/null || true
  rm -rf "$folder"
}
trap end EXIT
trap 'exit 1' INT TERM
mkdir -p "$folder/root/ppd" "$folder/spool/tmp" "$folder/cache" "$folder/state/certs" "$folder/home"

cat >"$folder/root/cupsd.conf" <<CONF
Listen $folder/socket
Browsing No
DefaultAuthType None
WebInterface No
LogLevel warn
<Location />
  Order allow,deny
  Allow all
</Location>
<Policy default>
  <Limit All>
    Order allow,deny
    Allow all
  </Limit>
</Policy>
CONF
cat >"$folder/root/cups-files.conf" <<CONF
FileDevice Yes
ServerRoot $folder/root
RequestRoot $folder/spool
TempDir $folder/spool/tmp
CacheDir $folder/cache
StateDir $folder/state
ErrorLog $folder/error_log
AccessLog $folder/access_log
PageLog $folder/page_log
CONF

# A server of root's gives its filters another user.
if [ "$(id -u)" = 0 ]; then
  printf 'User lp\nGroup lp\nSystemGroup root\n' >>"$folder/root/cups-files.conf"
  chmod 755 "$folder"
fi

# queue NAME BEGIN-TAG
queue() {
  cat >>"$folder/root/printers.conf" <<CONF
<$2 $1>
Info The $1 of the tests
Location Field office
MakeModel Test plotter
DeviceURI file://$folder/$1.out
State Idle
Accepting Yes
</Printer>
CONF
  cp "$folder/ppd" "$folder/root/ppd/$1.ppd"
}

# papers LINE-FORMAT: a line for each, of its name, width and height in points.
papers() {
  for paper in 'A4 595 842' 'A3 842 1191' 'Letter 612 792'; do
    # shellcheck disable=SC2059,SC2086
    printf "$1\n" $paper
  done
}
{
  echo '*PPD-Adobe: "4.3"'
  echo '*FormatVersion: "4.3"'
  echo '*FileVersion: "1.0"'
  echo '*LanguageVersion: English'
  echo '*LanguageEncoding: ISOLatin1'
  echo '*PCFileName: "TEST.PPD"'
  echo '*Product: "(Test plotter)"'
  echo '*Manufacturer: "Test"'
  echo '*ModelName: "Test plotter"'
  echo '*ShortNickName: "Test plotter"'
  echo '*NickName: "Test plotter"'
  echo '*PSVersion: "(3010.000) 0"'
  echo '*LanguageLevel: "3"'
  echo '*ColorDevice: True'
  echo '*DefaultColorSpace: RGB'
  echo '*FileSystem: False'
  for option in PageSize PageRegion; do
    echo "*OpenUI *$option: PickOne"
    echo "*OrderDependency: 10 AnySetup *$option"
    echo "*Default$option: A4"
    papers "*$option %s: \"<</PageSize[%s %s]>>setpagedevice\""
    echo "*CloseUI: *$option"
  done
  echo '*DefaultImageableArea: A4'
  papers '*ImageableArea %s: "0 0 %s %s"'
  echo '*DefaultPaperDimension: A4'
  papers '*PaperDimension %s: "%s %s"'
} >"$folder/ppd"
queue plotter DefaultPrinter
queue other Printer

/usr/sbin/cupsd -f -c "$folder/root/cupsd.conf" -s "$folder/root/cups-files.conf" &
server=$!
tries=0
while [ ! -S "$folder/socket" ]; do
  tries=$((tries + 1))
  if [ $tries -gt 200 ] || ! kill -0 "$server" 2>/dev/null; then
    cat "$folder/error_log" >&2
    exit 1
  fi
  sleep 0.1
done
CUPS_SERVER=$folder/socket CUPS_SERVERROOT=$folder/root HOME=$folder/home CUPS_PROCESS=$server "$@"
