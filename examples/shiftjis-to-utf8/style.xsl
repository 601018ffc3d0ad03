<?xml version="1.0" encoding="UTF-8"?>
<!-- A tea merchant's list, kept in Shift_JIS by an old system, as a page in UTF-8. The names of
     elements are Japanese, too. Teas are grouped by kind and sorted by their reading in kana. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="html" encoding="UTF-8" doctype-system="about:legacy-compat"/>

  <xsl:key name="kind" match="茶" use="@類"/>

  <xsl:template match="/目録">
    <html lang="ja">
      <head>
        <title><xsl:call-template name="heading"/></title>
        <meta name="viewport" content="width=device-width"/>
        <style>
          body { max-width: 40em; margin: 3em auto; padding: 0 1em; color: #23301f;
                 font: 16px/1.8 "Hiragino Mincho ProN", "Noto Serif CJK JP", serif }
          h1 { font-weight: normal; letter-spacing: .1em }
          h2 { margin: 2em 0 0; padding-bottom: .2em; color: #4c7a34; font-weight: normal;
               border-bottom: 2px solid #b9cf9f }
          table { width: 100%; border-collapse: collapse }
          td { padding: .8em 1em .8em 0; vertical-align: top; border-bottom: 1px solid #e2e8da }
          td:first-child { width: 2.2em } .name { font-size: 1.25em } .quiet { color: #7c8577; font-size: .85em }
          .price { padding-right: 0; text-align: right; white-space: nowrap }
          .limited { margin-left: .5em; padding: .1em .5em; border-radius: 3px; font-size: .75em;
                     color: #fff; background: #b0462f }
        </style>
      </head>
      <body>
        <h1><xsl:call-template name="heading"/></h1>
        <p><xsl:value-of select="案内"/></p>
        <xsl:for-each select="茶[generate-id() = generate-id(key('kind', @類)[1])]">
          <h2><xsl:value-of select="@類"/></h2>
          <table>
            <xsl:apply-templates select="key('kind', @類)">
              <xsl:sort select="名/@よみ"/>
            </xsl:apply-templates>
          </table>
        </xsl:for-each>
        <p class="quiet">
          <xsl:value-of select="concat('全', count(茶), '品')"/>
        </p>
      </body>
    </html>
  </xsl:template>

  <xsl:template name="heading">
    <xsl:value-of select="concat(@店, '　', @年, @季, 'の目録')"/>
  </xsl:template>

  <xsl:template match="茶">
    <tr>
      <td class="quiet"><xsl:value-of select="@番号"/></td>
      <td>
        <ruby class="name">
          <xsl:value-of select="名"/>
          <rt><xsl:value-of select="名/@よみ"/></rt>
        </ruby>
        <xsl:if test="@限定">
          <span class="limited">限定</span>
        </xsl:if>
        <br/>
        <span class="quiet"><xsl:value-of select="産地"/></span>
        <br/>
        <xsl:value-of select="説明"/>
      </td>
      <td class="price">
        <xsl:value-of select="concat(format-number(値, '#,##0'), '円')"/>
        <br/>
        <span class="quiet"><xsl:value-of select="concat(値/@量, 'グラム')"/></span>
      </td>
    </tr>
  </xsl:template>
</xsl:stylesheet>
