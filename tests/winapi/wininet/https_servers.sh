#!/bin/sh
# Servers of HTTPS on this machine, with certificates made for the run, and a proxy with an account;
# until this is killed.
#   https_servers.sh FOLDER PLAIN GOOD EXPIRED OTHER OWN PROXY
# The ports: plain HTTP; certificates that are good, have expired, are for another host, are signed
# by themselves; the proxy. ca.pem of the folder is the authority of the first three.
set -eu
cd "$1"
plain=$2 good=$3 expired=$4 other=$5 own=$6 proxy=$7

new_key='-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes'
openssl req -x509 $new_key -subj /CN=authority -days 2 -keyout ca.key -out ca.pem 2>/dev/null

# certificate NAME HOST DAYS SIGNER...
certificate() {
  name=$1 days=$3
  echo "subjectAltName=$2" >"$name.ext"
  shift 3
  openssl req $new_key -subj /CN=test -keyout "$name.key" -out "$name.csr" 2>/dev/null
  openssl x509 -req -in "$name.csr" -days "$days" -extfile "$name.ext" "$@" -out "$name.pem" \
    2>/dev/null
}
certificate good IP:127.0.0.1 2 -CA ca.pem -CAkey ca.key -CAcreateserial
certificate expired IP:127.0.0.1 -1 -CA ca.pem -CAkey ca.key -CAcreateserial
certificate other DNS:other.example 2 -CA ca.pem -CAkey ca.key -CAcreateserial
certificate own IP:127.0.0.1 2 -signkey own.key

mkdir www
printf 'hello' >www/file
{
  echo "daemon off; master_process off; error_log /dev/null; pid $PWD/pid; events {}"
  echo "http { access_log off;"
  for kind in client_body proxy fastcgi uwsgi scgi; do echo "${kind}_temp_path $PWD/$kind;"; done
  echo "server { listen 127.0.0.1:$plain; root $PWD/www; }"
  for site in good:$good expired:$expired other:$other own:$own; do
    name=${site%:*}
    echo "server { listen 127.0.0.1:${site#*:} ssl; root $PWD/www;"
    echo "ssl_certificate $PWD/$name.pem; ssl_certificate_key $PWD/$name.key;"
    echo "location /leave { return 302 http://127.0.0.1:$plain/file; }"
    echo "location /stay { return 301 /file; } }"
  done
  echo "}"
} >nginx.conf
cat >tinyproxy.conf <<CONF
Port $proxy
Listen 127.0.0.1
Allow 127.0.0.1
BasicAuth surveyor level
LogLevel Critical
CONF

# Both are killed outright: tinyproxy was seen to go on after a signal to end, until a second one.
processes=
trap 'kill -KILL $processes; wait; exit 0' TERM
tinyproxy -d -c tinyproxy.conf &
processes=$!
nginx -p "$PWD" -e /dev/null -c "$PWD/nginx.conf" &
processes="$processes $!"
wait
