# bash completion for kelmora(1)

_kelmora() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()

  # Options and their values alternate, so an odd place is an option, whatever stands before it.
  if ((COMP_CWORD % 2 == 1)); then
    mapfile -t COMPREPLY < <(compgen -W '-xml -xsl -out -param -xslstack' -- "$current")
    return
  fi
  case ${previous,,} in
    -xml) _kelmora_files "$current" '@(xml|xhtml|svg|rss|atom|xsd|dbk|docbook)' ;;
    -xsl) _kelmora_files "$current" '@(xsl|xslt)' ;;
    -out) _kelmora_files "$current" '*' ;;
    -xslstack) mapfile -t COMPREPLY < <(compgen -W '1000 10000 100000 1000000' -- "$current") ;;
    -param)
      _kelmora_parameters "$current"
      compopt -o nospace
      ;;
  esac
}

# Directories, and files with one of the extensions; all files where there is none of them.
_kelmora_files() {  # CURRENT EXTENSIONS
  local extglob_was path files=() matching=()
  extglob_was=$(shopt -p extglob)
  shopt -s extglob
  mapfile -t files < <(compgen -f -- "$1")
  for path in "${files[@]}"; do
    # shellcheck disable=SC2053
    if [[ -d $path || $path == *.$2 ]]; then matching+=("$path"); fi
  done
  $extglob_was
  if ((${#matching[@]} == 0)) || [[ $2 == '*' ]]; then matching=("${files[@]}"); fi
  COMPREPLY=("${matching[@]}")
  compopt -o filenames
}

# The names that the top-level xsl:param elements of the stylesheet on the line declare.
_kelmora_parameters() {  # CURRENT
  local i stylesheet=
  for ((i = 1; i < ${#COMP_WORDS[@]} - 1; ++i)); do
    if [[ ${COMP_WORDS[i],,} == [-/]xsl ]]; then stylesheet=${COMP_WORDS[i + 1]}; fi
  done
  if [[ ! -f $stylesheet ]]; then return; fi
  mapfile -t COMPREPLY < <(
    compgen -S = -W "$(sed -n "/<xsl:template.*<\/xsl:template>/d; /<xsl:template/,/<\/xsl:template>/d
      s/.*<xsl:param[[:space:]][^>]*name=[\"']\([^\"']*\).*/\1/p" \
      "$stylesheet" 2>/dev/null | sort -u)" -- "$1"
  )
}

complete -F _kelmora kelmora
