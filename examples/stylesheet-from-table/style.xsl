<?xml version="1.0" encoding="UTF-8"?>
<!-- Makes a stylesheet out of a list of columns; that one writes records as comma-separated values.
     What is named out: here becomes xsl: in the result. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
    xmlns:out="urn:stylesheet-to-be">
  <xsl:output method="xml" encoding="UTF-8" indent="yes"/>
  <xsl:namespace-alias stylesheet-prefix="out" result-prefix="xsl"/>

  <xsl:template match="/table">
    <out:stylesheet version="1.0">
      <out:output method="text" encoding="UTF-8"/>

      <out:template match="/*">
        <xsl:for-each select="column">
          <xsl:call-template name="comma"/>
          <out:call-template name="quoted">
            <out:with-param name="text"><xsl:value-of select="@title"/></out:with-param>
          </out:call-template>
        </xsl:for-each>
        <out:text><xsl:text>&#10;</xsl:text></out:text>
        <out:apply-templates select="{@records}">
          <out:sort select="{@sort}"/>
        </out:apply-templates>
      </out:template>

      <out:template match="{@records}">
        <xsl:apply-templates select="column"/>
        <out:text><xsl:text>&#10;</xsl:text></out:text>
      </out:template>

      <!-- A text in quotes, with each quote in it doubled. -->
      <out:template name="quoted">
        <out:param name="text"/>
        <out:text>"</out:text>
        <out:call-template name="doubled">
          <out:with-param name="text" select="$text"/>
        </out:call-template>
        <out:text>"</out:text>
      </out:template>

      <out:template name="doubled">
        <out:param name="text"/>
        <out:choose>
          <out:when test="contains($text, '&quot;')">
            <out:value-of select="concat(substring-before($text, '&quot;'), '&quot;&quot;')"/>
            <out:call-template name="doubled">
              <out:with-param name="text" select="substring-after($text, '&quot;')"/>
            </out:call-template>
          </out:when>
          <out:otherwise>
            <out:value-of select="$text"/>
          </out:otherwise>
        </out:choose>
      </out:template>
    </out:stylesheet>
  </xsl:template>

  <xsl:template name="comma">
    <xsl:if test="position() &gt; 1">
      <out:text>,</out:text>
    </xsl:if>
  </xsl:template>

  <!-- A column is a quoted text, or a number with a format. Braces between quotes would not be
       evaluated, so the quotes come out of the braces. -->
  <xsl:template match="column">
    <xsl:call-template name="comma"/>
    <out:call-template name="quoted">
      <out:with-param name="text" select="{@select}"/>
    </out:call-template>
  </xsl:template>

  <xsl:template match="column[@format]">
    <xsl:call-template name="comma"/>
    <out:value-of
        select="format-number({@select}, {concat(&quot;'&quot;, @format, &quot;'&quot;)})"/>
  </xsl:template>
</xsl:stylesheet>
