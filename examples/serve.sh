#!/usr/bin/env bash
# Serves a packaged folder and the player page by nginx on loopback, until it is stopped (Ctrl-C).
# usage: serve.sh FOLDER [PORT]      without PORT: the first free one from 8080 on
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
[ $# -ge 1 ] && [ -d "$1" ] || { echo "usage: $0 FOLDER [PORT]" >&2; exit 2; }
folder=$(cd "$1" && pwd)
nginx=$(PATH="$PATH:/usr/sbin" command -v nginx) ||
    { echo "$0: no nginx; install it with: apt install nginx-light" >&2; exit 1; }

page="$here/web-player/dist"
[ -f "$page/index.html" ] || "$here/web-player/build.sh" >&2

is_free() { ! (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }
port=${2:-}
if [ -z "$port" ]; then
    for port in $(seq 8080 8179); do is_free "$port" && break; done
fi
is_free "$port" || { echo "$0: port $port is in use" >&2; exit 1; }

state=$(mktemp -d)
server=
# shellcheck disable=SC2329
stop() {
    [ -z "$server" ] || { kill "$server" 2>/dev/null; wait "$server" 2>/dev/null; } || true
    rm -rf "$state"
}
trap stop EXIT
trap 'exit 0' INT TERM

# A path in a configuration is a quoted string; the folder is reached by a link, whatever its name.
ln -s "$folder" "$state/media"
ln -s "$page" "$state/page"
user=
[ "$(id -u)" -ne 0 ] || user="user root;"
cat >"$state/nginx.conf" <<END
daemon off;
$user
pid $state/nginx.pid;
error_log stderr warn;
worker_processes 1;
events { worker_connections 64; }
http {
    access_log off;
    client_body_temp_path $state/body;
    proxy_temp_path $state/proxy;
    fastcgi_temp_path $state/fastcgi;
    uwsgi_temp_path $state/uwsgi;
    scgi_temp_path $state/scgi;
    types {
        text/html html;
        text/css css;
        text/javascript js;
        application/xml kzd;
    }
    default_type application/octet-stream;
    add_header Cache-Control no-cache;
    server {
        listen 127.0.0.1:$port;
        location / { root $state/page; }
        location /media/ {
            alias $state/media/;
            autoindex on;
            autoindex_format json;
        }
    }
}
END

"$nginx" -p "$state" -e stderr -c "$state/nginx.conf" &
server=$!
for _ in $(seq 100); do
    kill -0 "$server" 2>/dev/null || { wait "$server"; exit 1; }
    is_free "$port" || break
    sleep 0.05
done
echo "http://127.0.0.1:$port/"
wait "$server"
