<xsl:stylesheet version="1.0" xmlns:b="urn:b" exclude-result-prefixes="b" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output omit-xml-declaration="yes" indent="yes"/>
  <xsl:variable name="tree"><xsl:copy-of select="/r"/></xsl:variable>
  <xsl:template match="/r">
    <results>
      <copy-of z="1"><xsl:copy-of select="@*"/></copy-of>
      <copy><xsl:for-each select="@*"><xsl:copy/></xsl:for-each></copy>
      <bound xmlns:b="urn:b"><xsl:copy-of select="@b:m"/></bound>
      <outer xmlns:b="urn:b"><bound-outside><xsl:copy-of select="@b:m" /></bound-outside></outer>
      <twice><xsl:copy-of select="@b:m|b:e/@b:n" xmlns:b="urn:b"/></twice>
      <b:taken xmlns:b="urn:other"><xsl:copy-of select="@*[local-name()='m']"/></b:taken>
      <outer xmlns:b="urn:other"><hidden><xsl:copy-of select="@*[local-name()='m']"/></hidden></outer>
      <xsl:for-each select="$tree"><xsl:for-each select="*"><from-tree><xsl:copy-of select="@*"/></from-tree></xsl:for-each></xsl:for-each>
      <children><xsl:copy-of select="@*"/><xsl:copy-of select="*"/></children>
      <behind>text<xsl:copy-of select="@*"/></behind>
    </results>
  </xsl:template>
</xsl:stylesheet>
