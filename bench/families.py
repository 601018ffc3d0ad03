"""Inputs of the benchmark families: each family is a function of a size that writes its files into
a directory and returns (source, stylesheet). The same size gives the same bytes every time."""
import random

XSL = ('<?xml version="1.0" encoding="UTF-8"?>\n'
       '<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">\n%s\n'
       '</xsl:stylesheet>\n')
XML = '<?xml version="1.0" encoding="UTF-8"?>\n'
WORDS = ('alpha beta gamma delta epsilon zeta eta theta iota kappa lambda mu nu xi omicron pi rho '
         'sigma tau upsilon phi chi psi omega').split()


def write(directory, name, text):
    path = directory / name
    path.write_text(text, encoding='utf-8')
    return path


def words(rng, count):
    return ' '.join(rng.choice(WORDS) for _ in range(count))


def records(count, seed=1):
    rng = random.Random(seed)
    rows = [f'<record id="r{i}" group="g{rng.randrange(max(1, count // 20))}">'
            f'<name>{rng.choice(WORDS)} {rng.choice(WORDS)}{rng.randrange(count)}</name>'
            f'<price>{rng.randrange(100000) / 100:.2f}</price>'
            f'<date>{rng.randrange(1990, 2026)}-{rng.randrange(1, 13):02d}</date></record>'
            for i in range(count)]
    return XML + '<records>\n' + '\n'.join(rows) + '\n</records>\n'


def article(sections, seed=2):
    rng = random.Random(seed)
    out = [XML, '<article><title>', words(rng, 5), '</title>\n']
    for s in range(sections):
        out.append(f'<section id="s{s}"><title>{words(rng, 4)}</title>\n')
        for p in range(8):
            out.append(f'<para role="{rng.choice(WORDS)}">{words(rng, 12)} <emph>{words(rng, 2)}'
                       f'</emph> {words(rng, 8)} <link to="s{rng.randrange(sections)}">'
                       f'{words(rng, 2)}</link>.</para>\n')
        out.append('<list>' + ''.join(f'<item>{words(rng, 4)}</item>' for _ in range(4)) +
                   '</list></section>\n')
    out.append('</article>\n')
    return ''.join(out)


IDENTITY = ('<xsl:template match="@*|node()"><xsl:copy><xsl:apply-templates select="@*|node()"/>'
            '</xsl:copy></xsl:template>')


def startup(directory, size):
    return (write(directory, 'in.xml', '<a/>'),
            write(directory, 'in.xsl', XSL % '<xsl:template match="/"><b/></xsl:template>'))


def load(directory, size):
    return (write(directory, 'in.xml', article(size)),
            write(directory, 'in.xsl', XSL % '<xsl:template match="/"><done/></xsl:template>'))


def identity(directory, size):
    return (write(directory, 'in.xml', article(size)),
            write(directory, 'in.xsl', XSL % IDENTITY))


def rules(directory, size):
    body = ['<xsl:output method="html"/>',
            '<xsl:template match="/"><html><body><xsl:apply-templates/>'
            '<xsl:apply-templates select="//section" mode="toc"/></body></html></xsl:template>',
            '<xsl:template match="section"><div><xsl:apply-templates/></div></xsl:template>',
            '<xsl:template match="section" mode="toc"><p><xsl:value-of select="title"/></p>'
            '</xsl:template>',
            '<xsl:template match="section/title"><h2><xsl:apply-templates/></h2></xsl:template>',
            '<xsl:template match="para"><p><xsl:apply-templates/></p></xsl:template>',
            '<xsl:template match="emph"><em><xsl:apply-templates/></em></xsl:template>',
            '<xsl:template match="link"><a href="#{@to}"><xsl:apply-templates/></a></xsl:template>',
            '<xsl:template match="item[1]"><li class="first"><xsl:apply-templates/></li>'
            '</xsl:template>', '<xsl:template match="item"><li><xsl:apply-templates/></li>'
            '</xsl:template>']
    for i in range(290):
        mode = f' mode="m{i % 7}"' if i % 3 == 0 else ''
        body.append(f'<xsl:template match="unused{i}|unused{i}/x" priority="{i % 5}"{mode}>'
                    f'<u{i}/></xsl:template>')
    return write(directory, 'in.xml', article(size)), write(directory, 'in.xsl',
                                                            XSL % '\n'.join(body))


PATTERN_ENDS = ('para', 'emph', 'link', 'item', 'title', 'para/emph', 'list/item', 'para/link')
PATTERN_FORMS = ('section[{0}]/para[@role=\'{1}\']', 'section//para[{0}]', 'para[{0}]/emph',
                 'article//section[@id=\'s{0}\']/title', 'list/item[position() = {0}]',
                 'para[@role=\'{1}\'][last()]', 'section/para[last()]/link[@to]',
                 'section[position() mod {0} = 1]//item[last()]', 'article/section/para[{0}]/link',
                 'para[emph and @role=\'{1}\']//text()[{0}]', 'section[not(list)]//item',
                 'section[title]/list[count(item) = {0}]/item[1]')


def patterns(directory, size):
    """Sixty rules of several steps with predicates, on top of one rule for each element."""
    body = [f'<xsl:template match="{name}"><{name[0]}><xsl:apply-templates/></{name[0]}>'
            '</xsl:template>' for name in ('article', 'section', *PATTERN_ENDS)]
    for i in range(60 - len(body)):
        pattern = PATTERN_FORMS[i % len(PATTERN_FORMS)].format(2 + i % 7, WORDS[i % len(WORDS)])
        body.append(f'<xsl:template match="{pattern}"><r n="{i}"><xsl:apply-templates/></r>'
                    '</xsl:template>')
    return (write(directory, 'in.xml', article(size)),
            write(directory, 'in.xsl', XSL % '\n'.join(body)))


def text_sheet(directory, source, body, templates=''):
    """A stylesheet with text as its result, whose template for the root has this body."""
    sheet = f'<xsl:output method="text"/>{templates}<xsl:template match="/">{body}</xsl:template>'
    return write(directory, 'in.xml', source), write(directory, 'in.xsl', XSL % sheet)


def keys_join(directory, size):
    return text_sheet(directory, records(size),
                      '<xsl:for-each select="records/record"><xsl:value-of select="key(\'i\','
                      'concat(\'r\',position()))/name"/></xsl:for-each>',
                      '<xsl:key name="i" match="record" use="@id"/>')


def keys_grouping(directory, size):
    return text_sheet(directory, records(size),
                      '<xsl:for-each select="records/record[generate-id()=generate-id('
                      'key(\'g\',@group)[1])]"><xsl:value-of select="@group"/>:<xsl:for-each '
                      'select="key(\'g\',@group)"><xsl:value-of select="price"/>,</xsl:for-each>'
                      '</xsl:for-each>',
                      '<xsl:key name="g" match="record" use="@group"/>')


def sorts(*sort_keys):
    """A family that sorts the records by the keys: attributes of xsl:sort."""
    sort = ''.join(f'<xsl:sort {key}/>' for key in sort_keys)
    body = (f'<xsl:for-each select="records/record">{sort}<xsl:value-of select="@id"/>'
            '</xsl:for-each>')
    return lambda directory, size: text_sheet(directory, records(size), body)


def recursion_linear(directory, size):
    body = (f'<xsl:output method="text"/><xsl:template match="/"><xsl:for-each select="//i">'
            f'<xsl:call-template name="sum"><xsl:with-param name="n" select="400"/>'
            f'</xsl:call-template>,</xsl:for-each></xsl:template>'
            f'<xsl:template name="sum"><xsl:param name="n"/><xsl:param name="t" select="0"/>'
            f'<xsl:choose><xsl:when test="$n=0"><xsl:value-of select="$t"/></xsl:when>'
            f'<xsl:otherwise><xsl:call-template name="sum"><xsl:with-param name="n" select="$n - 1"'
            f'/><xsl:with-param name="t" select="$t + $n"/></xsl:call-template></xsl:otherwise>'
            f'</xsl:choose></xsl:template>')
    return (write(directory, 'in.xml', '<a>' + '<i/>' * size + '</a>'),
            write(directory, 'in.xsl', XSL % body))


def recursion_divide(directory, size):
    body = (f'<xsl:output method="text"/><xsl:template match="/"><xsl:call-template name="d">'
            f'<xsl:with-param name="lo" select="1"/><xsl:with-param name="hi" select="{size}"/>'
            f'</xsl:call-template></xsl:template><xsl:template name="d"><xsl:param name="lo"/>'
            f'<xsl:param name="hi"/><xsl:choose><xsl:when test="$lo=$hi"><xsl:value-of '
            f'select="$lo"/>,</xsl:when><xsl:otherwise><xsl:variable name="m" '
            f'select="floor(($lo + $hi) div 2)"/><xsl:call-template name="d"><xsl:with-param '
            f'name="lo" select="$lo"/><xsl:with-param name="hi" select="$m"/></xsl:call-template>'
            f'<xsl:call-template name="d"><xsl:with-param name="lo" select="$m + 1"/>'
            f'<xsl:with-param name="hi" select="$hi"/></xsl:call-template></xsl:otherwise>'
            f'</xsl:choose></xsl:template>')
    return write(directory, 'in.xml', '<a/>'), write(directory, 'in.xsl', XSL % body)


def recursion_deep(directory, size):
    templates = ('<xsl:template name="d"><xsl:param name="n"/><xsl:if test="$n &gt; 0">'
                 '<xsl:call-template name="d"><xsl:with-param name="n" select="$n - 1"/>'
                 '</xsl:call-template>.</xsl:if></xsl:template>')
    return text_sheet(directory, '<a>' + '<i/>' * 100 + '</a>',
                      f'<xsl:for-each select="//i"><xsl:call-template name="d"><xsl:with-param '
                      f'name="n" select="{size}"/></xsl:call-template></xsl:for-each>', templates)


def xpath(*expressions, repeat=1, sections='//section'):
    """A family that evaluates the expressions at every section, or at those of a path."""
    values = ''.join(f'<xsl:value-of select="{expression}"/>,' for expression in expressions)
    body = f'<xsl:for-each select="{sections}">{values * repeat}</xsl:for-each>'
    return lambda directory, size: text_sheet(directory, article(size), body)


xpath_descendant = xpath('count(.//para[emph])', 'count(.//link)', './/emph',
                         'count(para/descendant-or-self::node()/self::text())', repeat=4)
xpath_predicates = xpath('para[3]/@role', 'para[last()]/link/@to', 'count(para[position() &gt; 5])',
                         'count(para[@role=\'alpha\' or emph])', 'list/item[2]',
                         'count(para[link][2])', repeat=8)
xpath_unions = xpath('count(para|list|title)', 'count(*|@*|para/emph)', '(list|title|para)[2]',
                     'count(para/*|para/text()|para/@*)', repeat=4)
AXES = ('ancestor ancestor-or-self attribute child descendant descendant-or-self following '
        'following-sibling namespace parent preceding preceding-sibling self').split()
# Two of the axes are as long as the document, so a few sections will do.
xpath_axes = xpath(*(f'count(para[2]/{axis}::*)' for axis in AXES), repeat=6,
                   sections="//section[contains('s5 s105 s205 s305 s405', @id)]")


def strings_small(directory, size):
    body = ('<xsl:output method="text"/><xsl:template match="/"><xsl:for-each '
            'select="records/record"><xsl:value-of select="concat(translate(name,\'abc\',\'ABC\'),'
            'substring-before(name,\' \'),substring(name,3,4),string-length(name),'
            'normalize-space(name),contains(name,\'eta\'),starts-with(name,\'a\'))"/>'
            '</xsl:for-each></xsl:template>')
    return write(directory, 'in.xml', records(size)), write(directory, 'in.xsl', XSL % body)


def strings_big(directory, size):
    body = ('<xsl:output method="text"/><xsl:template match="/"><xsl:variable name="s" '
            'select="string(/)"/><xsl:value-of select="string-length(translate($s,'
            '\'abcdefgh\',\'ABCDEF\'))"/>,<xsl:value-of select="string-length(normalize-space($s))'
            '"/>,<xsl:value-of select="contains($s,\'no such text\')"/>,<xsl:value-of select="'
            'string-length(substring-after($s,\'omega\'))"/>,<xsl:value-of select="string-length('
            'concat($s,$s))"/></xsl:template>')
    return write(directory, 'in.xml', article(size)), write(directory, 'in.xsl', XSL % body)


def number(attributes):
    """A family that numbers every item."""
    body = f'<xsl:for-each select="//item"><xsl:number {attributes}/>;</xsl:for-each>'
    return lambda directory, size: text_sheet(directory, article(size), body)


def fragments(directory, size):
    body = ('<xsl:template match="/"><out><xsl:for-each select="records/record"><xsl:variable '
            'name="f"><p n="{position()}"><xsl:value-of select="name"/></p></xsl:variable>'
            '<xsl:call-template name="show"><xsl:with-param name="x" select="$f"/>'
            '</xsl:call-template></xsl:for-each></out></xsl:template><xsl:template name="show">'
            '<xsl:param name="x"/><xsl:copy-of select="$x"/><xsl:value-of select="string-length($x)'
            '"/></xsl:template>')
    return write(directory, 'in.xml', records(size)), write(directory, 'in.xsl', XSL % body)


def parameters(directory, size):
    templates = ('<xsl:template name="row"><xsl:param name="cells"/><xsl:param name="label" '
                 'select="\'none\'"/><xsl:param name="count" select="0"/><row n="{$count}">'
                 '<xsl:value-of select="$label"/><xsl:copy-of select="$cells"/></row></xsl:template>')
    body = ('<xsl:template match="/"><out><xsl:for-each select="records/record"><xsl:call-template '
            'name="row"><xsl:with-param name="cells"><c><xsl:value-of select="name"/></c><c>'
            '<xsl:value-of select="price"/></c></xsl:with-param><xsl:with-param name="count" '
            'select="position()"/></xsl:call-template></xsl:for-each></out></xsl:template>')
    return (write(directory, 'in.xml', records(size)),
            write(directory, 'in.xsl', XSL % (templates + body)))


def output_html(directory, size):
    body = ('<xsl:output method="html"/><xsl:template match="/"><html><body><table><xsl:for-each '
            'select="records/record"><tr class="{@group}"><td><xsl:value-of select="name"/></td>'
            '<td><xsl:value-of select="price"/></td></tr></xsl:for-each></table></body></html>'
            '</xsl:template>')
    return write(directory, 'in.xml', records(size)), write(directory, 'in.xsl', XSL % body)


def output_text(directory, size):
    return (write(directory, 'in.xml', article(size)),
            write(directory, 'in.xsl', XSL % '<xsl:output method="text"/>'))


def output_latin1(directory, size):
    return (write(directory, 'in.xml', article(size)),
            write(directory, 'in.xsl',
                  XSL % ('<xsl:output encoding="ISO-8859-1"/>' + IDENTITY)))


def namespaces(directory, size):
    rows = ''.join(f'<p{i % 50}:e xmlns:p{i % 50}="urn:n{i % 50}" p{i % 50}:a="1"><x/></p{i % 50}:e>'
                   for i in range(size))
    return (write(directory, 'in.xml', XML + f'<a>{rows}</a>'),
            write(directory, 'in.xsl', XSL % IDENTITY))


def entities(directory, size):
    rng = random.Random(3)
    declarations = ''.join(f'<!ENTITY e{i} "{words(rng, 3)}">' for i in range(200))
    body = ''.join(f'<p>{words(rng, 3)} &e{rng.randrange(200)}; {words(rng, 3)}</p>\n'
                   for i in range(size))
    return (write(directory, 'in.xml', XML + f'<!DOCTYPE a [{declarations}]>\n<a>{body}</a>'),
            write(directory, 'in.xsl', XSL % IDENTITY))


TEXT_KEY, NUMBER_KEY = 'select="name"', 'select="price" data-type="number" order="descending"'

# name: (function, sizes from small to large)
FAMILIES = {
    'startup': (startup, (1,)),
    'load': (load, (500, 2000, 8000)),
    'identity': (identity, (500, 1000, 2000, 4000)),
    'rules': (rules, (1000, 2000, 4000)),
    'patterns': (patterns, (850, 1700, 3400)),
    'keys-join': (keys_join, (25000, 50000, 100000)),
    'keys-grouping': (keys_grouping, (25000, 50000, 100000)),
    'sorts-text': (sorts(TEXT_KEY), (5000, 20000, 100000)),
    'sorts-number': (sorts(NUMBER_KEY), (5000, 20000, 100000)),
    'sorts-keys': (sorts('select="date"', 'select="@group"', NUMBER_KEY), (5000, 20000, 100000)),
    'recursion-linear': (recursion_linear, (100, 200, 400)),
    'recursion-divide': (recursion_divide, (20000, 40000, 80000)),
    'recursion-deep': (recursion_deep, (500, 1000, 2000)),
    'xpath-descendant': (xpath_descendant, (500, 1000, 2000)),
    'xpath-predicates': (xpath_predicates, (500, 1000, 2000)),
    'xpath-axes': (xpath_axes, (1000, 2000, 4000)),
    'xpath-unions': (xpath_unions, (500, 1000, 2000)),
    'strings-small': (strings_small, (10000, 20000, 40000)),
    'strings-big': (strings_big, (500, 1000, 2000, 4000)),
    'number-single': (number('format="1"'), (1000, 2000, 4000)),
    'number-multiple': (number('level="multiple" count="section|item" format="1.a"'),
                        (1000, 2000, 4000)),
    'number-any': (number('level="any" format="i"'), (250, 500, 1000)),
    'fragments': (fragments, (10000, 20000, 40000)),
    'parameters': (parameters, (10000, 20000, 40000)),
    'output-html': (output_html, (10000, 20000, 40000)),
    'output-text': (output_text, (1000, 2000, 4000)),
    'output-latin1': (output_latin1, (500, 1000, 2000)),
    'namespaces': (namespaces, (10000, 20000, 40000)),
    'entities': (entities, (10000, 20000, 40000)),
}
