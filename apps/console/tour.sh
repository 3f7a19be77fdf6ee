# Sourced by the tours of the programs. Shows a command as one would type it, with the lines that it
# is given, then what it prints; $program is the path of the program.
run() { run_with '' "$@"; }
run_with() {
  local input=$1 word line
  shift
  line="$ $(basename "$program")"
  for word in "$@"; do
    case $word in
      *[!A-Za-z0-9._=/-]*) line+=" '${word//\'/\'\\\'\'}'" ;;
      *) line+=" $word" ;;
    esac
  done
  printf '%s\n' "$line"
  [ -z "$input" ] || sed 's/^/< /' <<<"$input"
  "$program" "$@" <<<"$input" 2>&1 || printf '(exit status %d)\n' $?
  printf '\n'
}
